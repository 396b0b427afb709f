// Objects that the library must not have.

#include <string>

namespace ShortLived {

#if defined(AT_LOAD)
std::string& text = *new std::string("made at load");
#endif

const std::string& getText();

#if defined(AT_EXIT)
const std::string& getText() {
    static const std::string text("gone at exit");
    return text;
}
#elif defined(AT_THREAD_END)
const std::string& getText() {
    thread_local const std::string text("gone with its thread");
    return text;
}
#else
const std::string& getText() { return text; }
#endif

}  // namespace ShortLived
