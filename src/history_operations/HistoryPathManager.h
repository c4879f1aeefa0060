#pragma once

#include "platform/Export.h"

#include <string>
#include <string_view>

/// Where a data provider keeps its stored history: a folder of its own below the application's data folder, with one
/// folder per symbol. A plain value; one thread at a time.
class KALVENTO_API HistoryPathManager {
public:
    /// Takes the data folder joined with a_folder, up to a zero character, as the history folder, and makes it. Raises
    /// as KalventoPaths::Instance does. A folder that can't be made is no failure here or below.
    void InitPaths(std::wstring_view a_folder);

    /// Empty before InitPaths.
    std::wstring GetHistoryPath() const { return m_historyPath; }
    /// Folder of a symbol, which is made each time it is asked for. a_symbol: CP1250, joined as it stands, without
    /// escaping; an absolute path replaces the history folder.
    std::wstring GetHistorySymbolPath(const std::string& a_symbol) const;
    /// "DataOperation.xml" in the symbol's folder. The folder is made, the file is not.
    std::wstring GetOperationFilePath(const std::string& a_symbol) const;

private:
    std::wstring m_historyPath;
};
