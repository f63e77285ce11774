#include "DeviceSimulator/MusicCache.h"

#include <utility>

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

/// Counts up with every change of what is read of a file, too.
constexpr std::int64_t kVersion = 1;
constexpr int kPatienceMs = 250;  // with another process that writes

constexpr const char* kSchema =
    "CREATE TABLE file(path BLOB PRIMARY KEY, size INTEGER, modified INTEGER, is_music INTEGER,"
    " title TEXT, artist TEXT, album TEXT, album_artist TEXT, genre TEXT, composer TEXT, disc INTEGER,"
    " track INTEGER, compilation INTEGER, duration_ms INTEGER, sample_rate INTEGER, cover INTEGER)"
    " WITHOUT ROWID;"
    // A number is never given twice: another process may still hold it.
    "CREATE TABLE cover(number INTEGER PRIMARY KEY AUTOINCREMENT, digest TEXT UNIQUE, width INTEGER,"
    " height INTEGER, jpeg BLOB)";

std::span<const std::uint8_t> PathBytes(const std::string& path) {
    return {reinterpret_cast<const std::uint8_t*>(path.data()), path.size()};
}

/// Of a column, whatever a damaged file put there.
std::uint32_t Number(const SqliteStatement& row, int column) {
    const std::int64_t number = row.Number(column);
    return number < 0 || number > UINT32_MAX ? 0 : static_cast<std::uint32_t>(number);
}

std::string Name(const SqliteStatement& row, int column) {
    return CleanName(row.Text(column));
}

MusicFileRecord RecordOf(const SqliteStatement& row) {
    MusicFileRecord file;
    file.stamp = {row.Number(1), row.Number(2)};
    file.isMusic = row.Number(3) != 0;
    TrackTags& tags = file.tags;
    int column = 4;
    for (std::string* name :
         {&tags.title, &tags.artist, &tags.album, &tags.albumArtist, &tags.genre, &tags.composer}) {
        *name = Name(row, column++);
    }
    tags.disc = Number(row, column++);
    tags.track = Number(row, column++);
    tags.compilation = row.Number(column++) != 0;
    tags.durationMs = Number(row, column++);
    tags.sampleRate = Number(row, column++);
    const std::int64_t cover = row.Number(column);
    file.cover = cover <= 0 || cover >= kNoCover ? kNoCover : static_cast<std::uint32_t>(cover);
    return file;
}

std::int64_t VersionOf(const SqliteHandle& database, int& result) {
    SqliteStatement version;
    result = version.Prepare(database.get(), "PRAGMA user_version");
    if (result != SQLITE_OK) {
        return 0;
    }
    result = version.Step();
    return result == SQLITE_ROW ? version.Number(0) : 0;
}

bool IsDamage(int result) {
    return result == SQLITE_NOTADB || result == SQLITE_CORRUPT;
}

void RemoveDatabase(const fs::path& file) {
    for (const char* suffix : {"", "-wal", "-shm"}) {
        std::error_code error;
        fs::remove(file.native() + suffix, error);
    }
}

/// Makes the tables where there are none yet; SQLITE_CORRUPT for a database that has others. May leave a
/// transaction open when it fails.
int MakeSchema(const SqliteHandle& database) {
    int result = SQLITE_OK;
    if (VersionOf(database, result) == kVersion || result != SQLITE_ROW) {
        return result == SQLITE_ROW ? SQLITE_OK : result;
    }
    result = ExecSqlite(database, "BEGIN IMMEDIATE");
    if (result != SQLITE_OK) {
        return result;
    }
    const std::int64_t version = VersionOf(database, result);
    if (version == 0) {
        const std::string mark = "PRAGMA user_version=" + std::to_string(kVersion);
        for (const char* sql : {kSchema, mark.c_str()}) {
            result = ExecSqlite(database, sql);
            if (result != SQLITE_OK) {
                return result == SQLITE_ERROR ? SQLITE_CORRUPT : result;
            }
        }
    } else if (version != kVersion) {
        return SQLITE_CORRUPT;
    }  // else another process has been faster
    return ExecSqlite(database, "COMMIT");
}

}  // namespace

std::shared_ptr<MusicCache> MusicCache::Open(const fs::path& folder, std::string& error) {
    std::error_code code;
    fs::create_directories(folder, code);
    const fs::path file = folder / "device-simulator-music.db";
    for (int attempt = 0; attempt < 2; ++attempt) {
        int result = SQLITE_OK;
        auto database = OpenSqlite(file, result);
        if (result == SQLITE_OK) {
            const std::shared_ptr<MusicCache> cache(new MusicCache(file, std::move(database)));
            result = cache->Prepare();
            if (result == SQLITE_OK) {
                return cache;
            }
        }
        error = code ? code.message() : sqlite3_errstr(result);
        if (!IsDamage(result)) {
            break;
        }
        RemoveDatabase(file);
    }
    return nullptr;
}

int MusicCache::Prepare() {
    sqlite3_busy_timeout(m_database.get(), kPatienceMs);
    // Readers then do not wait for a writer; a file system without the means for it leaves it as it was.
    ExecSqlite(m_database, "PRAGMA journal_mode=WAL");
    ExecSqlite(m_database, "PRAGMA synchronous=NORMAL");
    const int result = MakeSchema(m_database);
    if (result != SQLITE_OK) {
        return result;
    }
    return PrepareStatements();
}

int MusicCache::PrepareStatements() {
    const std::pair<SqliteStatement*, const char*> statements[] = {
        {&m_filesBelow, "SELECT * FROM file WHERE path>=? AND path<?"},
        {&m_putFile, "REPLACE INTO file VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"},
        {&m_removeFile, "DELETE FROM file WHERE path=?"},
        {&m_findCover, "SELECT number FROM cover WHERE digest=?"},
        {&m_keepCover,
         "INSERT INTO cover(digest,width,height,jpeg) VALUES(?,?,?,?)"
         " ON CONFLICT DO UPDATE SET digest=digest RETURNING number"},
        {&m_readCover, "SELECT width,height,jpeg FROM cover WHERE number=?"}};
    for (const auto& [statement, sql] : statements) {
        const int result = statement->Prepare(m_database.get(), sql);
        if (result != SQLITE_OK) {
            return result == SQLITE_ERROR ? SQLITE_CORRUPT : result;  // the tables are not those of kSchema
        }
    }
    return SQLITE_OK;
}

MusicCache::Files MusicCache::FilesBelow(const std::string& folder) {
    const std::lock_guard lock(m_mutex);
    std::string first = folder;
    if (!first.ends_with('/')) {
        first += '/';
    }
    std::string end = first;
    ++end.back();  // the byte behind the separator
    Files files;
    m_filesBelow.Add(PathBytes(first));
    m_filesBelow.Add(PathBytes(end));
    int result = m_filesBelow.Step();
    for (; result == SQLITE_ROW; result = m_filesBelow.Step()) {
        files.emplace(m_filesBelow.Text(0), RecordOf(m_filesBelow));
    }
    m_filesBelow.Reset();
    if (!Check(result)) {
        files.clear();
    }
    return files;
}

void MusicCache::Put(const std::string& path, const MusicFileRecord& file) {
    const std::lock_guard lock(m_mutex);
    if (!BeginWriting()) {
        return;
    }
    m_putFile.Add(PathBytes(path));
    m_putFile.Add(file.stamp.size);
    m_putFile.Add(file.stamp.modified);
    m_putFile.Add(std::int64_t{file.isMusic});
    const TrackTags& tags = file.tags;
    for (const std::string* name :
         {&tags.title, &tags.artist, &tags.album, &tags.albumArtist, &tags.genre, &tags.composer}) {
        m_putFile.Add(*name);
    }
    for (const std::uint32_t number :
         {tags.disc, tags.track, std::uint32_t{tags.compilation}, tags.durationMs, tags.sampleRate,
          file.cover == kNoCover ? 0 : file.cover}) {
        m_putFile.Add(std::int64_t{number});
    }
    Check(m_putFile.Run());
}

void MusicCache::Remove(const std::string& path) {
    const std::lock_guard lock(m_mutex);
    if (BeginWriting()) {
        m_removeFile.Add(PathBytes(path));
        Check(m_removeFile.Run());
    }
}

bool MusicCache::Commit() {
    const std::lock_guard lock(m_mutex);
    if (m_isWriting && m_error.empty()) {
        Check(
            ExecSqlite(m_database, "DELETE FROM cover WHERE number NOT IN (SELECT cover FROM file);COMMIT"));
        m_isWriting = false;
        // Left in the journal, all of it would be read at the next start.
        ExecSqlite(m_database, "PRAGMA wal_checkpoint(TRUNCATE)");
    }
    return m_error.empty();
}

bool MusicCache::HasFailed() const {
    const std::lock_guard lock(m_mutex);
    return !m_error.empty();
}

std::string MusicCache::Error() const {
    const std::lock_guard lock(m_mutex);
    return m_error;
}

std::optional<std::uint32_t> MusicCache::Find(const std::string& digest) {
    const std::lock_guard lock(m_mutex);
    m_findCover.Add(digest);
    return NumberFrom(m_findCover);
}

std::uint32_t MusicCache::Keep(const std::string& digest, const Picture& cover) {
    const std::lock_guard lock(m_mutex);
    if (!BeginWriting()) {
        return kNoCover;
    }
    m_keepCover.Add(digest);
    m_keepCover.Add(std::int64_t{cover.width});
    m_keepCover.Add(std::int64_t{cover.height});
    m_keepCover.Add(cover.bytes);
    return NumberFrom(m_keepCover).value_or(kNoCover);
}

std::shared_ptr<const Picture> MusicCache::Read(std::uint32_t cover) {
    const std::lock_guard lock(m_mutex);
    std::shared_ptr<const Picture> picture;
    m_readCover.Add(std::int64_t{cover});
    if (m_readCover.Step() == SQLITE_ROW) {
        const auto bytes = m_readCover.Bytes(2);
        picture = std::make_shared<const Picture>(
            Picture{{bytes.begin(), bytes.end()}, Number(m_readCover, 0), Number(m_readCover, 1)});
    }
    m_readCover.Reset();
    return picture;
}

/// The first column of a statement's only row; none when it has none.
std::optional<std::uint32_t> MusicCache::NumberFrom(SqliteStatement& statement) {
    const int result = statement.Step();
    std::optional<std::uint32_t> number;
    if (result == SQLITE_ROW) {
        number = Number(statement, 0);
    }
    Check(result);
    statement.Reset();
    return number;
}

bool MusicCache::BeginWriting() {
    if (!m_isWriting && m_error.empty()) {
        m_isWriting = Check(ExecSqlite(m_database, "BEGIN IMMEDIATE"));
    }
    return m_error.empty();
}

/// Remembers the first failure, and takes back what was written. A damaged file is not found again.
bool MusicCache::Check(int result) {
    if (result == SQLITE_OK || result == SQLITE_ROW || result == SQLITE_DONE) {
        return true;
    }
    if (m_error.empty()) {
        m_error = CleanName(sqlite3_errmsg(m_database.get()));
        ExecSqlite(m_database, "ROLLBACK");
        if (IsDamage(result & 0xFF)) {
            RemoveDatabase(m_file);
        }
    }
    return false;
}

}  // namespace DeviceSimulator
