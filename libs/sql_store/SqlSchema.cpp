#include "sql_store/SqlSchema.h"

#include "platform/CodePage.h"

#include <stdexcept>
#include <string>

namespace {

// Names are bytes that a database's encoding need not accept, so they are stored as bytea. SqlRowForm.h describes the
// columns of times. Rows have no foreign key: it would be looked up for each of a million rows, and they come and go
// with their instrument anyway, under its lock.
constexpr const char* S_tables = R"sql(
CREATE SCHEMA IF NOT EXISTS kalvento;
CREATE TABLE state (
    only_one boolean PRIMARY KEY DEFAULT true CHECK (only_one),
    version integer NOT NULL,
    changes bigint NOT NULL
);
CREATE TABLE instruments (
    number integer GENERATED ALWAYS AS IDENTITY PRIMARY KEY,
    isin bytea NOT NULL UNIQUE,
    short_name bytea NOT NULL,
    long_name bytea NOT NULL,
    market bytea NOT NULL,
    interval_kind integer NOT NULL,
    multiplicity bigint NOT NULL,
    live boolean NOT NULL,
    operations_version integer NOT NULL DEFAULT 0,
    row_count bigint NOT NULL DEFAULT 0
);
CREATE TABLE series (
    instrument integer NOT NULL REFERENCES instruments ON DELETE CASCADE,
    place integer NOT NULL,
    id bigint NOT NULL,
    fold integer NOT NULL,
    label bytea NOT NULL,
    min_precision integer NOT NULL,
    max_precision integer NOT NULL,
    PRIMARY KEY (instrument, place)
);
CREATE TABLE groups (
    instrument integer NOT NULL REFERENCES instruments ON DELETE CASCADE,
    place integer NOT NULL,
    name bytea NOT NULL,
    PRIMARY KEY (instrument, place)
);
CREATE TABLE rows (
    instrument integer NOT NULL,
    position bigint NOT NULL,
    day date NOT NULL,
    second integer NOT NULL,
    counter integer NOT NULL,
    day_number double precision NOT NULL,
    values double precision[] NOT NULL,
    PRIMARY KEY (instrument, position)
);
CREATE INDEX rows_by_day ON rows (instrument, day, position);
CREATE TABLE operations (
    instrument integer NOT NULL REFERENCES instruments ON DELETE CASCADE,
    place integer NOT NULL,
    id integer NOT NULL,
    kind integer NOT NULL,
    day_number double precision NOT NULL,
    counter integer NOT NULL,
    factor double precision NOT NULL,
    PRIMARY KEY (instrument, place)
);
CREATE TABLE books (
    instrument integer PRIMARY KEY REFERENCES instruments ON DELETE CASCADE,
    day date,
    second integer,
    counter integer,
    day_number double precision,
    series bigint[] NOT NULL,
    values double precision[] NOT NULL
);
)sql";

// Any number that other programs of the same database are unlikely to lock.
constexpr const char* S_lock = "SELECT pg_advisory_xact_lock(5496825413741)";

bool Exists(pqxx::transaction_base& a_transaction)
{
    // Not by to_regclass, which may answer out of a cache that is older than the lock.
    return a_transaction
        .exec1("SELECT EXISTS (SELECT FROM pg_class JOIN pg_namespace ON pg_namespace.oid = relnamespace"
               " WHERE relname = 'state' AND nspname = 'kalvento')")[0]
        .as<bool>();
}

void CheckVersion(pqxx::transaction_base& a_transaction)
{
    // By its full name: then a user who may not use the schema is told so, and not that there is no such table.
    const int version = a_transaction.exec1("SELECT version FROM kalvento.state")[0].as<int>();
    if (version != SqlSchema::S_version)
        throw std::runtime_error(std::string("Tabele w bazie mają wersję "_cp1250) + std::to_string(version) +
                                 ", a obsługiwana jest "_cp1250 + std::to_string(SqlSchema::S_version));
}

} // namespace

void SqlSchema::Ensure(pqxx::connection_base& a_connection)
{
    // Most users may only read: nothing is locked or created without need.
    {
        pqxx::nontransaction look(a_connection);
        if (Exists(look))
            return CheckVersion(look);
    }
    pqxx::work create(a_connection);
    create.exec(S_lock);
    if (!Exists(create)) {
        create.exec(S_tables);
        create.exec("INSERT INTO state (version, changes) VALUES (" + std::to_string(S_version) + ", 0)");
    }
    CheckVersion(create);
    create.commit();
}
