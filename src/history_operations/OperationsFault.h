#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// What the text of a list of operations should have had at a place.
enum EOperationsPart : std::uint32_t {
    EOperationsLine = 0,       ///< A line at all: the text has none.
    EOperationsVersion = 1,    ///< A whole number of 32 bits.
    EOperationsOperation = 2,  ///< A line id,date,type,factor whose date has six digits, YYMMDD.
    EOperationsIdentifier = 3, ///< A whole number of 32 bits.
    EOperationsDate = 4,       ///< Six digits, YYMMDD.
    EOperationsType = 5,       ///< A whole number of 32 bits.
    EOperationsFactor = 6      ///< A number with a decimal point.
};

/// A place in the text of a list of operations that HistoryOperations::Parse refuses or can't make sense of.
struct OperationsFault {
    EOperationsPart expected = EOperationsLine;
    std::size_t line = 0;   ///< From 1; 0 where there is none.
    std::size_t column = 0; ///< In bytes from 1; 0 where there is no line.
    std::string found;      ///< The line or the field, without white space.
};
