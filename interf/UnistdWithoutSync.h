#pragma once

/// POSIX declares a function `sync()` in the global namespace, where C++ then allows no namespace of that name. This
/// takes in <unistd.h> with the function under another name, so that a later #include of it changes nothing.
///
/// Everything that links `Tandry::Interfaces` has it included ahead of all other headers; whoever builds by other means
/// includes it first.
#if defined(__unix__) || defined(__APPLE__)
#define sync sync_function_of_unistd
#include <unistd.h>
#undef sync
#endif
