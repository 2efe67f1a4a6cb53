#pragma once

/// <unistd.h> declares the POSIX function `sync()` in the global namespace, which then cannot have a namespace of that
/// name. This header includes <unistd.h> with the function renamed, so that a later #include of it has no effect.
///
/// It must come before all other headers. CMake and pkg-config pass the option for that to everything that links
/// `Tandry::Interfaces`; other builds include it first.
///
/// In every such source file the global namespace thus has the other functions of <unistd.h>: `link`, `read`, `pause`
/// and more. Global variables and types of a client cannot have their names; what is in a namespace or class can.
#if defined(__unix__) || defined(__APPLE__)
#define sync sync_function_of_unistd
#include <unistd.h>
#undef sync
#endif
