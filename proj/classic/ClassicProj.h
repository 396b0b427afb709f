#pragma once

#include "platform/ThreadSafety.h"

// PROJ's classic interface, with its classic meaning, on the installed PROJ.
namespace ClassicProj {

struct Definition;

// A CRS definition. Made once, never released, found valid by PROJ when it was made.
using projPJ = Definition*;
// Carries the error number of the definitions made with it, which do not refer to it.
struct Context {
    int error = 0;
};
using projCtx = Context*;

projCtx pj_ctx_alloc();
void pj_ctx_free(projCtx context);

// The CRS of a definition text such as "+init=epsg:25832" or "+proj=utm +zone=32 +datum=WGS84". Parameters
// that stand before those of the init file win over them. Null, with the reason in the error number, when the
// init file has no such code or PROJ cannot make the projection. Thread-safe.
projPJ pj_init_plus_ctx(projCtx context, const char* definition);

// Whether coordinates of the CRS are longitude and latitude. A constant of the object: needs no lock.
int pj_is_latlong(projPJ definition);

// Calling pj_transform, which one thread may do at a time.
extern struct COORDTRANS_THREAD_SAFETY(capability("role")) TransformRole {
} transformRole;

// Transforms `count` points, the i-th at index i * offset; `z` may be null. Longitude/latitude in radians,
// other coordinates in the unit of their definition, in the order of its "+axis". Returns 0, or PROJ's error
// number for the first point that fails, which then keeps its values; the points before it are transformed.
//
// A height that is NaN counts as none and stays NaN.
//
// REQUIRES: calls do not overlap, nor with a fork: the caller has a lock, and takes the role with it.
int pj_transform(projPJ source, projPJ target, long count, int offset, double* x, double* y, double* z)
    COORDTRANS_THREAD_SAFETY(requires_capability(transformRole));

// PROJ's text for an error number, null for 0. Valid for the life of the process. Thread-safe.
const char* pj_strerrno(int error);

// The error number of the last pj_set_searchpath or of the last definition made without a context.
int* pj_get_errno_ref();

// The directories in which init files and grids are looked for, before PROJ's own. The error number is not 0 when one
// of them cannot be searched. Not while other calls run.
void pj_set_searchpath(int count, const char** paths);

// Waits for what other threads do here, other than pj_transform, and holds them off until unlockAfterFork.
void lockForFork();
// In parent and child.
void unlockAfterFork();
// In the child, before unlockAfterFork: what PROJ has made for the parent is used no more and made anew at need.
// Definitions stay.
void resetInChild();

}  // namespace ClassicProj
