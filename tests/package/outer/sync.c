#include <unistd.h>

/* The library's headers rename this function, but in C++ alone. */
void FlushAll(void)
{
    sync();
}
