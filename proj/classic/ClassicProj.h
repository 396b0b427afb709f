#pragma once

#include "platform/ThreadSafety.h"

// PROJ's classic interface, with its classic meaning, on the installed PROJ.
namespace ClassicProj {

struct Definition;

// A CRS definition. Made once and never released; PROJ accepted it when it was made.
using projPJ = Definition*;
// Has the error number of the definition made last with it. Definitions do not refer to it.
struct Context {
    int error = 0;
};
using projCtx = Context*;

projCtx pj_ctx_alloc();
void pj_ctx_free(projCtx context);

// Makes the CRS of a definition text such as "+init=epsg:25832" or "+proj=utm +zone=32 +datum=WGS84". Parameters of the
// text take precedence over those of the init file. Returns null, with the reason in the error number, when the init
// file lacks the code or PROJ cannot make the projection. Thread-safe.
projPJ pj_init_plus_ctx(projCtx context, const char* definition);

// Whether coordinates of the CRS are longitude and latitude. A constant of the object, so the call needs no lock.
int pj_is_latlong(projPJ definition);

// The role of calling pj_transform, for clang's analysis. One thread at a time has it.
extern struct COORDTRANS_THREAD_SAFETY(capability("role")) TransformRole {
} transformRole;

// Transforms `count` points, the i-th at index i * offset; `z` may be null. Longitude and latitude are in radians,
// other coordinates in the unit of their definition, in the order of its "+axis". Returns 0, or PROJ's error number for
// the first point that fails. That point keeps its values; the points before it are transformed.
//
// A height that is NaN counts as no height and stays NaN.
//
// REQUIRES: calls overlap neither each other nor a fork. The caller holds a lock and has the role.
int pj_transform(projPJ source, projPJ target, long count, int offset, double* x, double* y, double* z)
    COORDTRANS_THREAD_SAFETY(requires_capability(transformRole));

// PROJ's text for an error number, null for 0. Valid until the process ends. Thread-safe.
const char* pj_strerrno(int error);

// The error number of the last pj_set_searchpath or of the last definition made without a context.
int* pj_get_errno_ref();

// Sets the directories that are searched for init files and grids before PROJ's own. The error number is not 0 when one
// of them cannot be searched. REQUIRES: no other call runs.
void pj_set_searchpath(int count, const char** paths);

// Waits until other threads have left the functions here, pj_transform excepted, and blocks them until unlockAfterFork.
void lockForFork();
// Called in parent and child.
void unlockAfterFork();
// Called in the child before unlockAfterFork. PROJ objects of the parent are no longer used and are made again when
// needed. Definitions stay.
void resetInChild();

}  // namespace ClassicProj
