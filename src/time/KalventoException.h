#pragma once

#include "platform/Export.h"

#include <exception>
#include <string>
#include <string_view>

/// The library's own failure. Constructing one writes it to the log, so a raise is on record even if nobody catches it;
/// copies and moves don't log again.
class KALVENTO_API KalventoException : public std::exception {
public:
    /// a_place: qualified name of the raising function; a_line: its source line; a_message: Polish text in CP1250.
    KalventoException(std::string_view a_place, int a_line, std::string_view a_message);

    /// "<place>\t<line> - <message>" in CP1250.
    const char* what() const noexcept override;

private:
    std::string m_text;
};
