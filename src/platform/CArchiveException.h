#pragma once

#include "platform/Export.h"

#include <cstdint>
#include <stdexcept>
#include <string>

/// What an archive raises. what() says in Polish (CP1250) what was refused, where, and what would be accepted.
class KALVENTO_API CArchiveException : public std::runtime_error {
public:
    /// The kinds, under the platform's names.
    enum Cause : std::int32_t {
        none = 0,
        genericException = 1,
        readOnly = 2,  ///< Written to an archive that loads.
        endOfFile = 3, ///< The bytes end before the value does.
        writeOnly = 4, ///< Read from an archive that stores.
        badIndex = 5,  ///< A tag or a length that no record has.
        badClass = 6,  ///< An unknown class, or not the one asked for.
        badSchema = 7  ///< A class whose schema isn't the one known here.
    };

    CArchiveException(Cause a_cause, const std::string& a_message)
        : std::runtime_error(a_message), m_cause(a_cause)
    {}
    CArchiveException(const CArchiveException&) = default;
    CArchiveException& operator=(const CArchiveException&) = default;
    ~CArchiveException() override;

    Cause m_cause;
};
