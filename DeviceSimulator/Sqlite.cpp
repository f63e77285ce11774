#include "DeviceSimulator/Sqlite.h"

namespace DeviceSimulator {

namespace {

std::string_view AsText(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

int SqliteStatement::Prepare(sqlite3* database, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(database, sql, -1, &statement, nullptr);
    m_statement.reset(statement);
    return result;
}

void SqliteStatement::Add(std::int64_t number) {
    sqlite3_bind_int64(m_statement.get(), ++m_added, number);
}

void SqliteStatement::Add(std::string_view text) {
    sqlite3_bind_text64(m_statement.get(), ++m_added, text.data() == nullptr ? "" : text.data(), text.size(),
                        SQLITE_TRANSIENT, SQLITE_UTF8);
}

void SqliteStatement::Add(std::span<const std::uint8_t> bytes) {
    sqlite3_bind_blob64(m_statement.get(), ++m_added, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
}

void SqliteStatement::Reset() {
    sqlite3_reset(m_statement.get());
    m_added = 0;
}

int SqliteStatement::Run() {
    const int result = Step();
    Reset();
    return result == SQLITE_DONE ? SQLITE_OK : result;
}

std::span<const std::uint8_t> SqliteStatement::Bytes(int column) const {
    const auto* const bytes =
        static_cast<const std::uint8_t*>(sqlite3_column_blob(m_statement.get(), column));
    const int size = sqlite3_column_bytes(m_statement.get(), column);
    return bytes == nullptr ? std::span<const std::uint8_t>{}
                            : std::span(bytes, static_cast<std::size_t>(size));
}

std::string_view SqliteStatement::Text(int column) const {
    return AsText(Bytes(column));
}

SqliteHandle OpenSqlite(const std::filesystem::path& file, int& result) {
    sqlite3* database = nullptr;
    result = sqlite3_open_v2(file.c_str(), &database,
                             SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    return SqliteHandle(database);
}

int ExecSqlite(const SqliteHandle& database, const char* sql) {
    return sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr);
}

}  // namespace DeviceSimulator
