#include "time/KalventoException.h"

#include "velo/Log.h"

#include <fmt/format.h>

KalventoException::KalventoException(std::string_view a_place, int a_line, std::string_view a_message)
{
    VeloTools::Log::Instance().Write(a_place, a_line, a_message);
    m_text = fmt::format("{}\t{} - {}", a_place, a_line, a_message);
}

const char* KalventoException::what() const noexcept
{
    return m_text.c_str();
}
