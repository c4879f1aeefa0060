#pragma once

#include "platform/Export.h"

#include <string>
#include <string_view>

namespace VeloTools {

/// A CP1250 text as wide text, for calls that take a pointer. The pointer is valid as long as the object.
class KALVENTO_API ConverterMultiByteToWideChar {
public:
    explicit ConverterMultiByteToWideChar(std::string_view a_text);

    operator const wchar_t*()
        const; // NOLINT(google-explicit-constructor): it is passed where a pointer is wanted.

private:
    std::wstring m_text;
};

} // namespace VeloTools
