#include "tools/projdir/Database.h"

#include <new>
#include <utility>

#include <sqlite3.h>

#include "tools/projdir/Line.h"
#include "tools/projdir/Registry.h"

namespace ProjDir {
namespace {

struct FinishStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

[[noreturn]] void failAsDamaged(const std::string& path, const std::string& reason) {
    throw RegistryError("PROJ's database \"" + path + "\" is damaged: " + toOneLine(abridge(reason)));
}

void requireSuccess(int result, sqlite3* database, const std::string& path) {
    if (result == SQLITE_NOMEM) throw std::bad_alloc();
    if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE)
        failAsDamaged(path, sqlite3_errmsg(database));
}

std::string readCell(sqlite3_stmt* statement, int column) {
    if (sqlite3_column_type(statement, column) == SQLITE_NULL) return "";
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    if (text == nullptr) throw std::bad_alloc();
    return text;
}

Database::Row readRow(sqlite3_stmt* statement) {
    Database::Row row;
    for (int column = 0; column < sqlite3_column_count(statement); ++column) row.push_back(readCell(statement, column));
    return row;
}

}  // namespace

void Database::Close::operator()(sqlite3* database) const { sqlite3_close(database); }

Database::Database(std::string databasePath) : path(std::move(databasePath)) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READONLY, nullptr);
    connection.reset(opened);
    requireSuccess(result, opened, path);
}

void Database::query(const std::string& statement, const std::function<void(const Row&)>& take) const {
    sqlite3_stmt* prepared = nullptr;
    requireSuccess(sqlite3_prepare_v2(connection.get(), statement.c_str(), -1, &prepared, nullptr), connection.get(),
                   path);
    const std::unique_ptr<sqlite3_stmt, FinishStatement> rows(prepared);
    int result = sqlite3_step(prepared);
    for (; result == SQLITE_ROW; result = sqlite3_step(prepared)) take(readRow(prepared));
    requireSuccess(result, connection.get(), path);
}

// PROJ goes on with less where a page is damaged, and does not report each of them.
void Database::requireSoundPages() const {
    query("PRAGMA quick_check(1)", [this](const Row& row) {
        if (row.front() != "ok") failAsDamaged(path, row.front());
    });
}

}  // namespace ProjDir
