#pragma once

#include "platform/Export.h"

#include <boost/json/fwd.hpp>

#include <string>
#include <string_view>

/// Conversions and shared texts. All conversions take any input; platform/CodePage.h says what becomes of characters
/// that the target lacks. The ANSI code page is CP1250 on every machine. Safe from any thread.
namespace VeloTools::String {

KALVENTO_API std::string WideToAnsi(std::wstring_view a_text);
KALVENTO_API std::wstring AnsiToWide(std::string_view a_text);
KALVENTO_API std::wstring Utf8ToWide(std::string_view a_text);
KALVENTO_API boost::json::string WideToJsonUtf8(std::wstring_view a_text);

/// Lower case of every letter of CP1250; other bytes stay. No locale.
KALVENTO_API std::string ToLower(std::string a_text);

/// For look-ups that return a reference and find nothing.
KALVENTO_API const std::string& EmptyString();
KALVENTO_API const std::wstring& EmptyWString();
/// What data sources give for an absent text: "(null)". Callers compare by content.
KALVENTO_API const std::string& NullString();

} // namespace VeloTools::String
