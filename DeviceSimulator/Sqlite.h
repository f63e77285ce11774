// What the music cache needs of SQLite, with owners for its handles.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string_view>

namespace DeviceSimulator {

/// A prepared statement. Parameters and columns count from 0. What a column gives lasts until the next Step
/// or Reset. Results are SQLite's codes.
class SqliteStatement {
  public:
    /// What SQLite says of it.
    int Prepare(sqlite3* database, const char* sql);

    /// Behind the last parameter that was bound since the last Reset.
    void Add(std::int64_t number);
    void Add(std::string_view text);
    void Add(std::span<const std::uint8_t> bytes);

    int Step() { return sqlite3_step(m_statement.get()); }
    void Reset();
    /// Step for a statement without rows, then Reset; SQLITE_OK when it has been done.
    int Run();

    std::int64_t Number(int column) const { return sqlite3_column_int64(m_statement.get(), column); }
    std::span<const std::uint8_t> Bytes(int column) const;
    std::string_view Text(int column) const;

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
    int m_added = 0;
};

struct CloseSqlite {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using SqliteHandle = std::unique_ptr<sqlite3, CloseSqlite>;

/// Opens or makes a database for one thread at a time; what SQLite says of it in `result`.
SqliteHandle OpenSqlite(const std::filesystem::path& file, int& result);

/// Runs `sql`, any number of statements without rows.
int ExecSqlite(const SqliteHandle& database, const char* sql);

}  // namespace DeviceSimulator
