#include "FMDB/FMStatement.h"

#include <sqlite3.h>

#include <algorithm>
#include <type_traits>

namespace {

/// Binds one stored value by its type. Texts and bytes are not copied by SQLite; `kept` holds them.
struct Binder {
    sqlite3_stmt* statement;
    int column;
    FMBoundBytes& kept;

    void operator()(std::monostate) const { sqlite3_bind_null(statement, column); }
    void operator()(PBNull) const { sqlite3_bind_null(statement, column); }
    void operator()(bool value) const { sqlite3_bind_int(statement, column, value ? 1 : 0); }
    void operator()(qint32 value) const { sqlite3_bind_int64(statement, column, value); }
    void operator()(quint32 value) const { sqlite3_bind_int64(statement, column, value); }
    void operator()(qint64 value) const { sqlite3_bind_int64(statement, column, value); }
    void operator()(quint64 value) const {
        sqlite3_bind_int64(statement, column, static_cast<sqlite3_int64>(value));
    }
    void operator()(float value) const {
        sqlite3_bind_double(statement, column, static_cast<double>(value));
    }
    void operator()(double value) const { sqlite3_bind_double(statement, column, value); }
    void operator()(PBDate value) const {
        sqlite3_bind_double(statement, column, value.secondsSince1970);
    }
    void operator()(const QByteArray& value) const {
        const QByteArray& bytes = kept.emplace_back(value);
        // constData() is never a null pointer, so that bytes of length 0 don't become NULL.
        sqlite3_bind_blob64(
            statement, column, bytes.constData(), static_cast<sqlite3_uint64>(bytes.size()),
            SQLITE_STATIC);
    }
    void operator()(const QString& value) const {
        const QByteArray& text = kept.emplace_back(value.toUtf8());
        sqlite3_bind_text(statement, column, text.constData(), -1, SQLITE_STATIC);
    }
};

} // namespace

void FMStatement::close() {
    sqlite3_finalize(_statement);
    _statement = nullptr;
}

void FMStatement::reset() {
    if (!_statement) return;
    sqlite3_reset(_statement);
    sqlite3_clear_bindings(_statement);
}

void FMStatement::bindArguments(std::span<const PBValue> arguments, FMBoundBytes& kept) {
    const auto count = static_cast<std::size_t>(sqlite3_bind_parameter_count(_statement));
    for (std::size_t index = 0; index < std::min(count, arguments.size()); ++index)
        bindObject(arguments[index], static_cast<int>(index) + 1, kept);
}

void FMStatement::bindArguments(std::span<const PBValue* const> arguments, FMBoundBytes& kept) {
    const auto count = static_cast<std::size_t>(sqlite3_bind_parameter_count(_statement));
    for (std::size_t index = 0; index < std::min(count, arguments.size()); ++index)
        bindObject(*arguments[index], static_cast<int>(index) + 1, kept);
}

void FMStatement::bindObject(const PBValue& value, int column, FMBoundBytes& kept) {
    const Binder bind{_statement, column, kept};
    if (value.isLocation() || value.isArray() || value.isDictionary()) {
        bind(value.toText());
        return;
    }
    std::visit(
        [&](const auto& stored) {
            if constexpr (std::is_invocable_v<const Binder&, decltype(stored)>) bind(stored);
        },
        value.storage());
}
