#pragma once

#include "host/IPluginCalls.h"
#include "platform/HeldFile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace kalvento::host {

/// The calls into plug-ins, on the disk: a file of this process names the one that is under way, so that the next start
/// learns in whose code a process has ended. One file a process; any number of processes share the folder.
class CallRecords {
public:
    /// A call that a process, dead by now, didn't come back from.
    struct Left {
        std::filesystem::path record;
        PluginCall call;
        std::string stamp;      ///< FileStamp of the plug-in's file at that time.
        bool isOverdue = false; ///< It hung; otherwise the process crashed or was killed.
    };

    /// Makes the folder and this process's file. Where that can't be, a line in the log says so, and nothing is kept.
    explicit CallRecords(std::filesystem::path a_folder);
    CallRecords(const CallRecords&) = delete;
    CallRecords& operator=(const CallRecords&) = delete;
    /// Removes this process's file.
    ~CallRecords();

    void Write(const PluginCall& a_call, bool a_isOverdue) const;
    void Clear() const;

    /// What dead processes have left; the files of those that ended between two calls are removed.
    std::vector<Left> FindLeft() const;
    static void Forget(const Left& a_left);

private:
    const std::filesystem::path m_folder;
    std::optional<kalvento::internal::HeldFile> m_file;
};

} // namespace kalvento::host
