#pragma once

#include <pqxx/pqxx>

/// The tables that hold a store, and what SqlStore and SqlWriter must agree on. docs/sql_provider.md describes them.
namespace SqlSchema {

/// Raised with any change that an older program would misread.
inline constexpr int S_version = 1;
/// Sent with the instrument's number when rows or its book became visible.
inline constexpr const char* S_channelRows = "kalvento_rows";
/// Sent when instruments or operations came, went or changed.
inline constexpr const char* S_channelInstruments = "kalvento_instruments";

/// Creates the schema `kalvento` where it is missing; terminals that start at once wait for the one that creates it.
/// Raises std::runtime_error (CP1250) for a schema of another version.
void Ensure(pqxx::connection_base& a_connection);

} // namespace SqlSchema
