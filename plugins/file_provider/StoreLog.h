#pragma once

#include "platform/CodePage.h"
#include "velo/Log.h"

#include <string_view>

namespace kalvento::files {

/// A line of the store in the log, from UTF-8, as the names of files are.
inline void WriteLog(int a_line, std::string_view a_utf8)
{
    VeloTools::Log::Instance().Write("FileStore", a_line,
                                     CodePage::WideToCp1250(CodePage::Utf8ToWide(a_utf8)));
}

} // namespace kalvento::files
