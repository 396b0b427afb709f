// host reload PLUGIN DIRECTORY LONGITUDE: loads, uses and unloads a module twice.
// host both PLUGIN DIRECTORY LONGITUDE PLUGIN DIRECTORY LONGITUDE: two modules, each with a copy of the library, at
// once.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>

namespace {

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

void reload(char** arguments) {
    for (int round = 0; round < 2; ++round) {
        const Module module(arguments);
        module.use();
        module.use();
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
    if (argc == 5 && std::strcmp(argv[1], "reload") == 0)
        reload(argv + 2);
    else if (argc == 8 && std::strcmp(argv[1], "both") == 0)
        both(argv + 2);
    else
        fail("usage: host reload|both ...");
    std::puts("ended well");
}
