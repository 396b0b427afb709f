// host reload PLUGIN DIRECTORY LONGITUDE FILE...: loads, uses and unloads a module several times. Each time, the files
// must be in memory while the module is loaded and must be gone afterwards. The module is one of the files.
// host fork PLUGIN DIRECTORY LONGITUDE: forks while a module is loaded, after it is unloaded, and after it is loaded
// again.
// host both PLUGIN DIRECTORY LONGITUDE PLUGIN DIRECTORY LONGITUDE: uses two modules at once, each with its own copy of
// the library.

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fstream>
#include <future>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int ROUNDS = 5;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

class Module {
public:
    explicit Module(char** arguments) : directory(arguments[1]), longitude(std::atof(arguments[2])) {
        handle = dlopen(arguments[0], RTLD_NOW | RTLD_LOCAL);
        if (handle == nullptr) fail(dlerror());
    }
    ~Module() {
        if (dlclose(handle) != 0) fail(dlerror());
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;

    void use() const {
        using Entry = int (*)(const char*, double);
        const auto entry = reinterpret_cast<Entry>(dlsym(handle, "transformAPoint"));
        if (entry == nullptr) fail(dlerror());
        if (entry(directory, longitude) != 0) fail("the module does not transform the point");
    }

private:
    const char* directory;
    double longitude;
    void* handle = nullptr;
};

// Returns the name of a file as /proc/self/maps lists it.
std::string realName(const char* file) {
    char name[PATH_MAX];
    if (realpath(file, name) == nullptr) fail("no such file");
    return name;
}

bool isInMemory(const std::string& file) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);)
        if (line.size() > file.size() && line.compare(line.size() - file.size(), file.size(), file) == 0) return true;
    return false;
}

bool isLoaded(const std::string& file) {
    void* const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
}

void requireLoaded(const std::vector<std::string>& files, bool loaded) {
    for (const std::string& file : files)
        if (isInMemory(file) != loaded || isLoaded(file) != loaded)
            fail((file + (loaded ? " is not in memory" : " is still in memory")).c_str());
}

// Uses the module on this thread, on a thread that ends before the module is unloaded, and on one that ends afterwards.
void loadAndUnload(char** arguments, const std::vector<std::string>& files) {
    std::promise<void> used;
    std::promise<void> unloaded;
    std::thread survivor;
    {
        const Module module(arguments);
        requireLoaded(files, true);
        module.use();
        std::thread([&] { module.use(); }).join();
        survivor = std::thread([&] {
            module.use();
            used.set_value();
            unloaded.get_future().wait();
        });
        used.get_future().wait();
    }
    requireLoaded(files, false);
    unloaded.set_value();
    survivor.join();
}

void reload(char** arguments, char** end) {
    std::vector<std::string> files;
    for (char** file = arguments + 3; file != end; ++file) files.push_back(realName(*file));
    for (int round = 0; round < ROUNDS; ++round) loadAndUnload(arguments, files);
}

template <typename Work>
void inChild(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || status != 0) fail("a child fails");
}

// Requires that the fork handlers of the library are removed when it is unloaded.
void forkAround(char** arguments) {
    const auto loadAndUse = [arguments] { Module(arguments).use(); };
    for (int round = 0; round < 2; ++round) {
        {
            const Module module(arguments);
            module.use();
            inChild([&module] { module.use(); });
            module.use();
        }
        inChild(loadAndUse);
        inChild([] {});
    }
}

void both(char** arguments) {
    const Module first(arguments);
    const Module second(arguments + 3);
    for (int round = 0; round < 2; ++round) {
        first.use();
        second.use();
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 5 && std::strcmp(argv[1], "reload") == 0)
        reload(argv + 2, argv + argc);
    else if (argc == 5 && std::strcmp(argv[1], "fork") == 0)
        forkAround(argv + 2);
    else if (argc == 8 && std::strcmp(argv[1], "both") == 0)
        both(argv + 2);
    else
        fail("usage: host reload|fork|both ...");
    std::puts("passed");
}
