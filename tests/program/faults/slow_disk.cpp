// SPDX-License-Identifier: Apache-2.0
//
// A disk that hangs: preloaded, it keeps fsync from returning as long as the file exists that
// NMOS_SLOW_DISK names.

#include <cstdlib>

#include <dlfcn.h>
#include <unistd.h>

extern "C" int fsync(int descriptor)
{
    constexpr useconds_t moment = 10'000;
    const char* const sign = std::getenv("NMOS_SLOW_DISK");
    while (sign != nullptr && access(sign, F_OK) == 0)
        usleep(moment);
    using Fsync = int (*)(int);
    static const auto real = reinterpret_cast<Fsync>(dlsym(RTLD_NEXT, "fsync"));
    return real(descriptor);
}
