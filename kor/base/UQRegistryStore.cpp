// The registry outside Windows: one SQLite database (schema in docs/registry.md). Every write is one
// transaction in write-ahead-log mode with synchronous=FULL, so a process killed at any point leaves each
// value as it was before or after its write, never in between; a busy timeout lets several processes
// write the same file.
#include "kor/base/UQRegistryStore.h"

#include "kor/base/Environment.h"

#include "compat/utf8.h"

#include <sqlite3.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string>
#include <thread>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korregistry {

namespace {

// How long a write waits for another process's transaction before it fails.
const int BUSY_TIMEOUT_MS = 30000;
const int SCHEMA_VERSION = 1;

const char* const SCHEMA = "CREATE TABLE IF NOT EXISTS registry_key("
                           " hive TEXT NOT NULL,"
                           " path_key TEXT NOT NULL,"
                           " path TEXT NOT NULL,"
                           " PRIMARY KEY (hive, path_key)) WITHOUT ROWID;"
                           "CREATE TABLE IF NOT EXISTS registry_value("
                           " hive TEXT NOT NULL,"
                           " path_key TEXT NOT NULL,"
                           " name_key TEXT NOT NULL,"
                           " name TEXT NOT NULL,"
                           " type INTEGER NOT NULL,"
                           " data,"
                           " PRIMARY KEY (hive, path_key, name_key)) WITHOUT ROWID;"
                           "PRAGMA user_version = 1;";

// One connection per process, used under the mutex: SQLite transactions belong to a connection, so two
// threads must not interleave theirs on it. Recursive, as an update holds it across the operations of its
// thread.
std::recursive_mutex g_mutex;
CString g_sConfiguredFile;
sqlite3* g_pDb = nullptr;
std::string g_openFile;
pid_t g_openPid = 0;

const char* hiveText(HKEY _hHive) noexcept {
    return _hHive == HKEY_LOCAL_MACHINE ? "HKLM" : "HKCU";
}

// Texts are stored in generalized UTF-8, so that an unpaired surrogate comes back as it was written (the
// registry keeps any UTF-16) instead of becoming U+FFFD and merging two names.
std::string storeText(const CString& _sText) {
    return uqfmt::wideToWtf8(_sText.GetString(), static_cast<std::size_t>(_sText.GetLength()));
}

CString fromStore(const char* _pText, std::size_t _nBytes) {
    return CString(uqfmt::wtf8ToWide(_pText, _nBytes));
}

// Lookups fold case as the registry does, with the one fold of CString::CompareNoCase.
std::string folded(const CString& _sS) {
    CString upper(_sS);
    upper.MakeUpper();
    return storeText(upper);
}

CString sqliteMessage(sqlite3* _pDb, int _nRc) {
    const char* message = _pDb != nullptr ? sqlite3_errmsg(_pDb) : sqlite3_errstr(_nRc);
    return CString::FromUtf8(message != nullptr ? message : "unknown SQLite error");
}

Result failure(Status _status, const CString& _sReason) {
    Result r;
    r.status = _status;
    r.sReason = _sReason;
    return r;
}

bool makeDirectories(const std::string& _sFile, std::string& _rsError) {
    const std::size_t slash = _sFile.find_last_of('/');
    if (slash == std::string::npos || slash == 0)
        return true;
    std::string path;
    for (std::size_t i = 0; i <= slash; ++i) {
        if (_sFile[i] == '/' && !path.empty() && path != "/") {
            if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
                _rsError = path + ": " + std::strerror(errno);
                return false;
            }
        }
        path += _sFile[i];
    }
    return true;
}

class Statement {
public:
    Statement(sqlite3* _pDb, const char* _pszSql) : m_pStmt(nullptr) {
        m_rc = sqlite3_prepare_v2(_pDb, _pszSql, -1, &m_pStmt, nullptr);
    }
    ~Statement() { sqlite3_finalize(m_pStmt); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    int rc() const noexcept { return m_rc; }
    // Binds texts by position (from 1); each must outlive the statement's execution.
    void text(int _nIndex, const std::string& _sS) {
        if (m_rc == SQLITE_OK)
            m_rc = sqlite3_bind_text(m_pStmt, _nIndex, _sS.data(), static_cast<int>(_sS.size()),
                                     SQLITE_TRANSIENT);
    }
    void integer(int _nIndex, sqlite3_int64 _n) {
        if (m_rc == SQLITE_OK)
            m_rc = sqlite3_bind_int64(m_pStmt, _nIndex, _n);
    }
    void blob(int _nIndex, const std::string& _sBytes) {
        if (m_rc == SQLITE_OK)
            m_rc = sqlite3_bind_blob(m_pStmt, _nIndex, _sBytes.data(), static_cast<int>(_sBytes.size()),
                                     SQLITE_TRANSIENT);
    }
    // SQLITE_ROW, SQLITE_DONE or an error.
    int step() {
        if (m_rc != SQLITE_OK)
            return m_rc;
        const int rc = sqlite3_step(m_pStmt);
        if (rc != SQLITE_ROW && rc != SQLITE_DONE)
            m_rc = rc;
        return rc;
    }
    sqlite3_stmt* get() const noexcept { return m_pStmt; }

private:
    sqlite3_stmt* m_pStmt;
    int m_rc;
};

// A transaction that rolls back unless committed. Writers begin IMMEDIATE: a deferred transaction that
// turns into a write while another process writes fails at once instead of waiting its turn. Inside an
// update's transaction it is a savepoint of that one, so that the update's reads and writes are one
// transaction and a failed write still undoes only itself.
class Transaction {
public:
    Transaction(sqlite3* _pDb, bool _bWrite)
        : m_pDb(_pDb), m_bOpen(false), m_bNested(sqlite3_get_autocommit(_pDb) == 0) {
        m_rc = sqlite3_exec(_pDb,
                            m_bNested ? "SAVEPOINT kor_operation"
                            : _bWrite ? "BEGIN IMMEDIATE"
                                      : "BEGIN",
                            nullptr, nullptr, nullptr);
        m_bOpen = m_rc == SQLITE_OK;
    }
    ~Transaction() {
        if (m_bOpen)
            sqlite3_exec(m_pDb, m_bNested ? "ROLLBACK TO kor_operation; RELEASE kor_operation" : "ROLLBACK",
                         nullptr, nullptr, nullptr);
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    int rc() const noexcept { return m_rc; }
    int commit() {
        const int rc =
            sqlite3_exec(m_pDb, m_bNested ? "RELEASE kor_operation" : "COMMIT", nullptr, nullptr, nullptr);
        // A failed COMMIT (busy) leaves the transaction open; the destructor rolls it back.
        if (rc == SQLITE_OK)
            m_bOpen = false;
        return rc;
    }

private:
    sqlite3* m_pDb;
    bool m_bOpen;
    bool m_bNested;
    int m_rc;
};

// What beginUpdate hands out: the connection whose transaction (or, nested in another update of the same
// thread, savepoint) it holds open.
struct Update {
    sqlite3* pDb = nullptr;
    bool bNested = false;
    bool bEnded = false;
};

CString configuredFile() {
    if (!g_sConfiguredFile.IsEmpty())
        return g_sConfiguredFile;
    const CString fromEnvironment = korenv::variable(L"KOR_REGISTRY_FILE");
    return fromEnvironment.IsEmpty() ? defaultFile() : fromEnvironment;
}

void closeConnection() {
    if (g_pDb != nullptr && g_openPid == ::getpid())
        sqlite3_close_v2(g_pDb);
    // A connection inherited through fork belongs to the parent: SQLite must not close (and so checkpoint
    // or unlock) it from the child, so it is only forgotten here.
    g_pDb = nullptr;
    g_openFile.clear();
}

int readVersion(sqlite3* _pDb, int& _rnVersion) {
    Statement s(_pDb, "PRAGMA user_version");
    if (s.step() == SQLITE_ROW)
        _rnVersion = sqlite3_column_int(s.get(), 0);
    return s.rc();
}

// "file:" URI of a path, for the URI parameters SQLite takes only there.
std::string fileUri(const std::string& _sPath) {
    std::string uri = "file:";
    for (const char c : _sPath) {
        if (c == '%' || c == '?' || c == '#') {
            char escaped[4];
            std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned char>(c));
            uri += escaped;
        } else {
            uri += c;
        }
    }
    return uri;
}

// One try at opening a file that this process may only read. Nothing is set up or created: a read must
// never need write access. A store in write-ahead-log mode needs its shared-memory file; where that may
// neither be opened nor created (a directory the process cannot write), the file is read as it stands,
// without the log of a writer that has not finished.
int attemptOpenReadOnly(const std::string& _sPath, sqlite3*& _rpOpened, int& _rnVersion) {
    int rc = sqlite3_open_v2(_sPath.c_str(), &_rpOpened, SQLITE_OPEN_READONLY, nullptr);
    if (rc == SQLITE_OK) {
        sqlite3_busy_timeout(_rpOpened, BUSY_TIMEOUT_MS);
        rc = readVersion(_rpOpened, _rnVersion);
    }
    if ((rc & 0xFF) == SQLITE_CANTOPEN || (rc & 0xFF) == SQLITE_READONLY) {
        sqlite3_close_v2(_rpOpened);
        _rpOpened = nullptr;
        rc = sqlite3_open_v2((fileUri(_sPath) + "?immutable=1").c_str(), &_rpOpened,
                             SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
        if (rc == SQLITE_OK)
            rc = readVersion(_rpOpened, _rnVersion);
    }
    return rc;
}

// One try at opening the file, setting it up and reading (or creating) its schema.
int attemptOpen(const std::string& _sPath, sqlite3*& _rpOpened, int& _rnVersion) {
    int rc = sqlite3_open_v2(_sPath.c_str(), &_rpOpened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    if (rc == SQLITE_OK) {
        sqlite3_busy_timeout(_rpOpened, BUSY_TIMEOUT_MS);
        // A newer program's store is left as it is, its journal mode too.
        rc = readVersion(_rpOpened, _rnVersion);
    }
    if (rc == SQLITE_OK && _rnVersion > SCHEMA_VERSION)
        return rc;
    // Write-ahead logging where the file system supports it; the rollback journal is as safe otherwise.
    if (rc == SQLITE_OK)
        rc = sqlite3_exec(_rpOpened, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK)
        rc = sqlite3_exec(_rpOpened, "PRAGMA synchronous=FULL", nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK && _rnVersion == 0) {
        Transaction t(_rpOpened, true);
        rc = t.rc();
        if (rc == SQLITE_OK)
            rc = sqlite3_exec(_rpOpened, SCHEMA, nullptr, nullptr, nullptr);
        if (rc == SQLITE_OK)
            rc = t.commit();
    }
    return rc;
}

// Whether the store is whole: a damaged or cut-off file must not read as one without values. Answers an
// empty text when it is, else what SQLite found first.
CString damage(sqlite3* _pDb, int& _rnRc) {
    Statement s(_pDb, "PRAGMA quick_check(1)");
    _rnRc = s.step() == SQLITE_ROW ? SQLITE_OK : s.rc();
    if (_rnRc != SQLITE_OK)
        return CString();
    const unsigned char* text = sqlite3_column_text(s.get(), 0);
    const std::string found = text != nullptr ? reinterpret_cast<const char*>(text) : "";
    return found == "ok" ? CString() : CString::FromUtf8(found);
}

// Opens the configured file unless it is open already; on failure fills the result. Called under the mutex.
Result open(sqlite3*& _rpDb) {
    const CString file = configuredFile();
    // A name that is not UTF-8 keeps its bytes (uqfmt::nativeToWide).
    const std::string path = uqfmt::wideToNative(file.GetString(), file.GetLength());
    if (g_pDb != nullptr && (g_openFile != path || g_openPid != ::getpid()))
        closeConnection();
    if (g_pDb != nullptr) {
        _rpDb = g_pDb;
        return Result();
    }

    Result r;
    r.status = Status::StoreUnavailable;
    r.sFile = file;
    struct stat status;
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) {
        r.sReason = L"it is a directory, not a database file";
        return r;
    }
    // A store the process may only read is opened for reading alone; writes then fail, reads work.
    const bool readOnly = exists && ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0;
    std::string error;
    if (!readOnly && !makeDirectories(path, error)) {
        r.sReason = CString::FromUtf8(error);
        return r;
    }
    // Two processes that open a new file at once can meet a lock that the busy handler does not wait for
    // (the switch to write-ahead logging, the first read of the schema): such an attempt starts again
    // until the busy time-out has passed.
    sqlite3* opened = nullptr;
    int rc = SQLITE_OK;
    int version = -1;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(BUSY_TIMEOUT_MS);
    for (;;) {
        opened = nullptr;
        version = -1;
        rc = readOnly ? attemptOpenReadOnly(path, opened, version) : attemptOpen(path, opened, version);
        if ((rc & 0xFF) != SQLITE_BUSY && (rc & 0xFF) != SQLITE_LOCKED)
            break;
        if (std::chrono::steady_clock::now() >= deadline)
            break;
        sqlite3_close_v2(opened);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (rc != SQLITE_OK) {
        r.sReason = sqliteMessage(opened, rc);
        sqlite3_close_v2(opened);
        return r;
    }
    if (version > SCHEMA_VERSION) {
        r.sReason.Format(L"schema version %d is newer than this program's (%d)", version, SCHEMA_VERSION);
        sqlite3_close_v2(opened);
        return r;
    }
    const CString found = damage(opened, rc);
    if (rc != SQLITE_OK || !found.IsEmpty()) {
        if (rc != SQLITE_OK)
            r.sReason = sqliteMessage(opened, rc);
        else
            r.sReason = L"the store is damaged: " + found;
        sqlite3_close_v2(opened);
        return r;
    }
    g_pDb = opened;
    g_openFile = path;
    g_openPid = ::getpid();
    _rpDb = opened;
    return Result();
}

// UTF-8 entries, each ended by a zero byte, as REG_MULTI_SZ ends its entries.
std::string encodeList(const std::vector<CString>& _list) {
    std::string bytes;
    for (const CString& s : _list) {
        bytes += storeText(s);
        bytes += '\0';
    }
    return bytes;
}

std::vector<CString> decodeList(const char* _pszData, int _nSize) {
    std::vector<CString> list;
    int start = 0;
    for (int i = 0; i <= _nSize; ++i) {
        if (i == _nSize || _pszData[i] == '\0') {
            if (i > start)
                list.push_back(fromStore(_pszData + start, static_cast<std::size_t>(i - start)));
            start = i + 1;
        }
    }
    return list;
}

const wchar_t* storageText(int _nType) noexcept {
    switch (_nType) {
    case SQLITE_INTEGER:
        return L"an integer";
    case SQLITE_FLOAT:
        return L"a real number";
    case SQLITE_TEXT:
        return L"text";
    case SQLITE_BLOB:
        return L"bytes";
    default:
        return L"NULL";
    }
}

// SQLITE_ROW with the value filled in, SQLITE_DONE when there is none, or an error.
int selectValue(sqlite3* _pDb, HKEY _hHive, const std::string& _sKeyFolded, const std::string& _sNameFolded,
                Value* _pValue) {
    Statement s(_pDb,
                "SELECT type, data FROM registry_value WHERE hive = ?1 AND path_key = ?2 AND name_key = ?3");
    s.text(1, hiveText(_hHive));
    s.text(2, _sKeyFolded);
    s.text(3, _sNameFolded);
    const int rc = s.step();
    if (rc != SQLITE_ROW || _pValue == nullptr)
        return rc == SQLITE_ROW || rc == SQLITE_DONE ? rc : s.rc();
    sqlite3_stmt* st = s.get();
    _pValue->dwType = static_cast<DWORD>(sqlite3_column_int64(st, 0));
    const int stored = sqlite3_column_type(st, 1);
    switch (_pValue->dwType) {
    case TYPE_SZ:
    case TYPE_EXPAND_SZ: {
        if (stored != SQLITE_TEXT) {
            _pValue->sMalformed.Format(L"a string stored as %s", storageText(stored));
            break;
        }
        const unsigned char* text = sqlite3_column_text(st, 1);
        _pValue->sText = text != nullptr ? fromStore(reinterpret_cast<const char*>(text),
                                                     static_cast<std::size_t>(sqlite3_column_bytes(st, 1)))
                                         : CString();
        break;
    }
    case TYPE_DWORD: {
        // Only what a REG_DWORD can hold: SQLite keeps any integer, text or nothing in the column.
        if (stored != SQLITE_INTEGER) {
            _pValue->sMalformed.Format(L"a number stored as %s", storageText(stored));
            break;
        }
        const sqlite3_int64 number = sqlite3_column_int64(st, 1);
        if (number < 0 || number > 0xFFFFFFFFll) {
            _pValue->sMalformed.Format(L"a number out of range (%I64d)", static_cast<long long>(number));
            break;
        }
        _pValue->dwNumber = static_cast<DWORD>(number);
        break;
    }
    case TYPE_MULTI_SZ:
        if (stored != SQLITE_BLOB) {
            _pValue->sMalformed.Format(L"a list of strings stored as %s", storageText(stored));
            break;
        }
        _pValue->asList =
            decodeList(static_cast<const char*>(sqlite3_column_blob(st, 1)), sqlite3_column_bytes(st, 1));
        break;
    default:
        break;
    }
    return SQLITE_ROW;
}

// SQLITE_ROW when the key exists (the hive itself always does), SQLITE_DONE when not, or an error.
int selectKey(sqlite3* _pDb, HKEY _hHive, const std::string& _sKeyFolded) {
    if (_sKeyFolded.empty())
        return SQLITE_ROW;
    Statement s(_pDb, "SELECT 1 FROM registry_key WHERE hive = ?1 AND path_key = ?2");
    s.text(1, hiveText(_hHive));
    s.text(2, _sKeyFolded);
    const int rc = s.step();
    return rc == SQLITE_ROW || rc == SQLITE_DONE ? rc : s.rc();
}

// The key and every parent, then the value; a value keeps the spelling of its name from its first write.
int insertValue(sqlite3* _pDb, HKEY _hHive, const CString& _sKey, const CString& _sName,
                const Value& _value) {
    for (int end = 0; end <= _sKey.GetLength(); ++end) {
        if (end < _sKey.GetLength() && _sKey[end] != L'\\')
            continue;
        const CString prefix = _sKey.Left(end);
        if (prefix.IsEmpty())
            continue;
        Statement s(_pDb, "INSERT OR IGNORE INTO registry_key (hive, path_key, path) VALUES (?1, ?2, ?3)");
        s.text(1, hiveText(_hHive));
        s.text(2, folded(prefix));
        s.text(3, storeText(prefix));
        if (s.step() != SQLITE_DONE)
            return s.rc();
    }
    Statement s(
        _pDb,
        "INSERT INTO registry_value (hive, path_key, name_key, name, type, data)"
        " VALUES (?1, ?2, ?3, ?4, ?5, ?6)"
        " ON CONFLICT (hive, path_key, name_key) DO UPDATE SET type = excluded.type, data = excluded.data");
    s.text(1, hiveText(_hHive));
    s.text(2, folded(_sKey));
    s.text(3, folded(_sName));
    s.text(4, storeText(_sName));
    s.integer(5, _value.dwType);
    switch (_value.dwType) {
    case TYPE_DWORD:
        s.integer(6, _value.dwNumber);
        break;
    case TYPE_MULTI_SZ:
        s.blob(6, encodeList(_value.asList));
        break;
    default:
        s.text(6, storeText(_value.sText));
        break;
    }
    return s.step() == SQLITE_DONE ? SQLITE_OK : s.rc();
}

} // namespace

Result read(HKEY _hHive, const CString& _sKey, const CString& _sName, Value& _rValue) {
    std::lock_guard<std::recursive_mutex> lock(g_mutex);
    sqlite3* db = nullptr;
    Result r = open(db);
    if (r.status != Status::Ok)
        return r;
    Transaction t(db, false);
    int rc = t.rc();
    if (rc == SQLITE_OK)
        rc = selectValue(db, _hHive, folded(_sKey), folded(_sName), &_rValue);
    if (rc == SQLITE_DONE) {
        rc = selectKey(db, _hHive, folded(_sKey));
        if (rc == SQLITE_ROW || rc == SQLITE_DONE)
            return failure(rc == SQLITE_ROW ? Status::ValueNotFound : Status::KeyNotFound, CString());
    }
    if (rc != SQLITE_ROW)
        return failure(Status::ReadFailed, sqliteMessage(db, rc));
    return r;
}

Result write(HKEY _hHive, const CString& _sKey, const CString& _sName, const Value& _value) {
    std::lock_guard<std::recursive_mutex> lock(g_mutex);
    sqlite3* db = nullptr;
    Result r = open(db);
    if (r.status != Status::Ok)
        return r;
    Transaction t(db, true);
    int rc = t.rc();
    if (rc == SQLITE_OK)
        rc = insertValue(db, _hHive, _sKey, _sName, _value);
    if (rc == SQLITE_OK)
        rc = t.commit();
    if (rc != SQLITE_OK)
        return failure(Status::WriteFailed, sqliteMessage(db, rc));
    return r;
}

Result readOrWrite(HKEY _hHive, const CString& _sKey, const CString& _sName, const Value& _default,
                   Value& _rValue, bool& _rbWritten) {
    std::lock_guard<std::recursive_mutex> lock(g_mutex);
    _rbWritten = false;
    sqlite3* db = nullptr;
    Result r = open(db);
    if (r.status != Status::Ok)
        return r;
    Transaction t(db, true);
    int rc = t.rc();
    if (rc == SQLITE_OK)
        rc = selectValue(db, _hHive, folded(_sKey), folded(_sName), &_rValue);
    if (rc == SQLITE_ROW)
        return r; // the transaction wrote nothing; its rollback ends it
    if (rc != SQLITE_DONE)
        return failure(Status::ReadFailed, sqliteMessage(db, rc));
    rc = insertValue(db, _hHive, _sKey, _sName, _default);
    if (rc == SQLITE_OK)
        rc = t.commit();
    if (rc != SQLITE_OK)
        return failure(Status::WriteFailed, sqliteMessage(db, rc));
    _rValue = _default;
    _rbWritten = true;
    return r;
}

Result beginUpdate(HKEY, const CString&, const CString&, void*& _rpLock) {
    _rpLock = nullptr;
    // Held until endUpdate: the other threads of the process wait here, other processes on the
    // transaction's write lock.
    std::unique_lock<std::recursive_mutex> guard(g_mutex);
    sqlite3* db = nullptr;
    Result r = open(db);
    if (r.status != Status::Ok)
        return r;
    Update* update = new (std::nothrow) Update;
    if (update == nullptr)
        return failure(Status::LockFailed, L"out of memory");
    update->pDb = db;
    update->bNested = sqlite3_get_autocommit(db) == 0;
    const int rc = sqlite3_exec(db, update->bNested ? "SAVEPOINT kor_update" : "BEGIN IMMEDIATE", nullptr,
                                nullptr, nullptr);
    if (rc != SQLITE_OK) {
        delete update;
        return failure(Status::LockFailed, sqliteMessage(db, rc));
    }
    guard.release();
    _rpLock = update;
    return r;
}

Result commitUpdate(void* _pLock) {
    std::lock_guard<std::recursive_mutex> guard(g_mutex);
    Update* update = static_cast<Update*>(_pLock);
    if (update == nullptr)
        return failure(Status::WriteFailed, L"no update is held");
    // A connection closed under the update (another store chosen) took its transaction with it.
    if (update->bEnded || update->pDb != g_pDb)
        return failure(Status::WriteFailed, L"the update has ended");
    const int rc = sqlite3_exec(update->pDb, update->bNested ? "RELEASE kor_update" : "COMMIT", nullptr,
                                nullptr, nullptr);
    if (rc != SQLITE_OK)
        return failure(Status::WriteFailed, sqliteMessage(update->pDb, rc));
    update->bEnded = true;
    return Result();
}

void endUpdate(void* _pLock) noexcept {
    Update* update = static_cast<Update*>(_pLock);
    if (update == nullptr)
        return;
    if (!update->bEnded && update->pDb == g_pDb)
        sqlite3_exec(update->pDb, update->bNested ? "ROLLBACK TO kor_update; RELEASE kor_update" : "ROLLBACK",
                     nullptr, nullptr, nullptr);
    delete update;
    // Taken by beginUpdate on this thread.
    g_mutex.unlock();
}

Result valueExists(HKEY _hHive, const CString& _sKey, const CString& _sName, bool& _rbExists) {
    std::lock_guard<std::recursive_mutex> lock(g_mutex);
    _rbExists = false;
    sqlite3* db = nullptr;
    Result r = open(db);
    if (r.status != Status::Ok)
        return r;
    const int rc = selectValue(db, _hHive, folded(_sKey), folded(_sName), nullptr);
    if (rc != SQLITE_ROW && rc != SQLITE_DONE)
        return failure(Status::ReadFailed, sqliteMessage(db, rc));
    _rbExists = rc == SQLITE_ROW;
    return r;
}

Result keyExists(HKEY _hHive, const CString& _sKey, bool& _rbExists) {
    std::lock_guard<std::recursive_mutex> lock(g_mutex);
    _rbExists = false;
    sqlite3* db = nullptr;
    Result r = open(db);
    if (r.status != Status::Ok)
        return r;
    const int rc = selectKey(db, _hHive, folded(_sKey));
    if (rc != SQLITE_ROW && rc != SQLITE_DONE)
        return failure(Status::ReadFailed, sqliteMessage(db, rc));
    _rbExists = rc == SQLITE_ROW;
    return r;
}

void setFile(const CString& _sPath) {
    std::lock_guard<std::recursive_mutex> lock(g_mutex);
    g_sConfiguredFile = _sPath;
    // The next operation opens the new file; a test that deletes the old one finds it closed.
    closeConnection();
}

CString currentFile() {
    std::lock_guard<std::recursive_mutex> lock(g_mutex);
    return configuredFile();
}

CString defaultFile() {
    const CString base = korenv::userDirectory(L"XDG_CONFIG_HOME", L".config");
    return base + L"/korguibase/registry.sqlite";
}

} // namespace korregistry
