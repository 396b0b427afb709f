#include "proj/classic/ProjectionPtr.h"

#include <cmath>
#include <new>
#include <string_view>

#include "proj/classic/ProjFiles.h"

namespace ClassicProj {

namespace {

// PROJ needs a tenth of this. When memory ends while it tries a text, it reports that into a string that is gone.
constexpr std::size_t ROOM = 1U << 20U;

void requireRoom() {
    void* volatile room = ::operator new(ROOM);
    ::operator delete(room);
}

bool namesTheEndOfMemory(std::string_view text) {
    return text.find("bad_alloc") != std::string_view::npos || text.find("out of memory") != std::string_view::npos;
}

// Listens to what PROJ has to say while it makes something: where memory ends it leaves parts out, a grid or the whole
// operation, and only its log shows why. The log quotes the text: if that has the words itself, they mean nothing.
class Listener {
public:
    Listener(PJ_CONTEXT* projContext, const std::string& text) : context(projContext) {
        if (namesTheEndOfMemory(text)) return;
        proj_log_func(context, this, listen);
        proj_log_level(context, PJ_LOG_DEBUG);
    }
    ~Listener() {
        proj_log_level(context, PJ_LOG_NONE);
        proj_log_func(context, nullptr, ignore);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    void requireMemory() const {
        if (memoryEnded) throw std::bad_alloc();
    }

private:
    static void listen(void* listener, int /*level*/, const char* message) {
        if (namesTheEndOfMemory(message)) static_cast<Listener*>(listener)->memoryEnded = true;
    }
    static void ignore(void* /*data*/, int /*level*/, const char* /*message*/) {}

    PJ_CONTEXT* context;
    bool memoryEnded = false;
};

// PROJ hands out an object that can do nothing when it could describe an operation but not make it.
bool isWhole(const ProjectionPtr& projection) {
    return projection != nullptr && proj_pj_info(projection.get()).id != nullptr;
}

// PROJ_ERR_OTHER is PROJ's number for the end of memory, when it has one.
ProjectionPtr makeOnce(const Listener& listener, PJ_CONTEXT* context, const std::string& text) {
    requireRoom();
    ProjectionPtr projection(proj_create(context, text.c_str()));
    listener.requireMemory();
    if (projection == nullptr && proj_context_errno(context) == PROJ_ERR_OTHER) throw std::bad_alloc();
    return projection;
}

// PROJ's reason for a failure may be wrong: since 9.2 it cuts a text with "@" in two when it meets any exception, and
// gives the reason why the first part fails. Another attempt shows it: if that succeeds, memory was the reason.
ProjectionPtr make(const Listener& listener, PJ_CONTEXT* context, const std::string& text) {
    ProjectionPtr projection = makeOnce(listener, context, text);
    if (isWhole(projection)) return projection;
    if (isWhole(makeOnce(listener, context, text))) throw std::bad_alloc();
    return nullptr;
}

bool concernsThePointAlone(int error) { return error >= PROJ_ERR_COORD_TRANSFM && error < PROJ_ERR_OTHER; }

// Grids that the process has met before are opened with the first point. If that fails, PROJ takes the shift for
// one without grids, which moves nothing.
bool canOpenGrids(PJ* shift) {
    constexpr double SOUTH_POLE = -1.5707963267948966;
    proj_errno_reset(shift);
    proj_trans(shift, PJ_FWD, proj_coord(0, SOUTH_POLE, 0, HUGE_VAL));
    const int error = proj_errno(shift);
    if (error != 0 && !concernsThePointAlone(error)) return false;
    proj_errno_reset(shift);
    return true;
}

}  // namespace

ProjectionPtr makeProjection(PJ_CONTEXT* context, const std::string& text) {
    return make(Listener(context, text), context, text);
}

ProjectionPtr makeGridShift(PJ_CONTEXT* context, const std::string& text) {
    const Listener listener(context, text);
    takeFileTrouble();
    ProjectionPtr shift = make(listener, context, text);
    const bool open = shift != nullptr && canOpenGrids(shift.get());
    listener.requireMemory();
    return open && !takeFileTrouble() ? std::move(shift) : nullptr;
}

}  // namespace ClassicProj
