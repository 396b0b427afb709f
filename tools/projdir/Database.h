#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;

namespace ProjDir {

// PROJ's database, read directly for what PROJ's interface does not list.
//
// One thread at a time. Owns its connection.
class Database {
public:
    // The cells of a row as text; empty for a cell without a value.
    using Row = std::vector<std::string>;

    // RegistryError when the file cannot be opened or is no database.
    explicit Database(std::string databasePath);

    // RegistryError when the database breaks off, std::bad_alloc for a shortage of memory.
    void query(const std::string& statement, const std::function<void(const Row&)>& take) const;
    // Reads every page; RegistryError for one that is damaged.
    void requireSoundPages() const;

private:
    struct Close {
        void operator()(sqlite3* database) const;
    };

    std::string path;
    std::unique_ptr<sqlite3, Close> connection;
};

}  // namespace ProjDir
