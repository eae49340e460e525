#pragma once

#include "platform/values/PBValue.h"

#include <QByteArray>

#include <span>
#include <vector>

struct sqlite3_stmt;

/// Bytes and UTF-8 texts that SQLite reads in place while a statement runs; whoever runs the
/// statement holds them until it is reset or finalised.
using FMBoundBytes = std::vector<QByteArray>;

/// A prepared statement that this object owns. Used by the thread of its connection only.
class FMStatement {
public:
    /// Takes the statement over; it may be empty.
    explicit FMStatement(sqlite3_stmt* statement) : _statement(statement) {}
    ~FMStatement() { close(); }
    FMStatement(const FMStatement&) = delete;
    FMStatement& operator=(const FMStatement&) = delete;

    /// Finalises the statement; a second call does nothing.
    void close();
    /// Makes the statement ready to run again and lets go of the values bound to it.
    void reset();

    /// Binds one argument after the other to the parameters 1, 2, …, by its exact stored type.
    /// Arguments beyond the last parameter are ignored; parameters without one are NULL.
    void bindArguments(std::span<const PBValue> arguments, FMBoundBytes& kept);
    void bindArguments(std::span<const PBValue* const> arguments, FMBoundBytes& kept);
    /// Binds a value to the parameter with this number, counted from 1. Absent and the null marker
    /// give NULL, dates seconds since 1970, values without a type of their own their text.
    void bindObject(const PBValue& value, int column, FMBoundBytes& kept);

    [[nodiscard]] sqlite3_stmt* statement() const { return _statement; }

    /// How many times the statement was run.
    [[nodiscard]] qint64 useCount() const { return _useCount; }
    void countUse() { ++_useCount; }

    /// Whether somebody runs the statement or an open cursor stands on it, so that nobody else may.
    [[nodiscard]] bool isInUse() const { return _inUse; }
    void setInUse(bool inUse) { _inUse = inUse; }

private:
    sqlite3_stmt* _statement;
    qint64 _useCount = 0;
    bool _inUse = false;
};
