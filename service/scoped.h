/* SPDX-License-Identifier: MIT
 *
 * Guards that undo one thing at the end of a block.
 */
#ifndef SERVICE_SCOPED_H
#define SERVICE_SCOPED_H

#include <cerrno>
#include <cstdlib>
#include <unistd.h>

struct scoped_close {
    const int fd; /* -1: nothing to close */

    explicit scoped_close(int descriptor) : fd(descriptor) {}
    scoped_close(const scoped_close &) = delete;
    scoped_close &operator=(const scoped_close &) = delete;
    ~scoped_close()
    {
        if (fd >= 0)
            close(fd);
    }
};

template <class T> struct scoped_free {
    T *const data; /* null: nothing to free */

    explicit scoped_free(T *block) : data(block) {}
    scoped_free(const scoped_free &) = delete;
    scoped_free &operator=(const scoped_free &) = delete;
    ~scoped_free()
    {
        free(data);
    }
};

/* Repeats a system call for as long as signals interrupt it. */
template <class Call> auto uninterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

#endif
