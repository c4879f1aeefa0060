#include "velo/ConverterMultiByteToWideChar.h"

#include "platform/CodePage.h"

namespace VeloTools {

ConverterMultiByteToWideChar::ConverterMultiByteToWideChar(std::string_view a_text)
    : m_text(CodePage::Cp1250ToWide(a_text))
{}

ConverterMultiByteToWideChar::operator const wchar_t*() const
{
    return m_text.c_str();
}

} // namespace VeloTools
