// SPDX-License-Identifier: Apache-2.0
//
// A name server that does not answer: preloaded, it makes the look-up of every name take 10 seconds
// and then fail. Addresses written as numbers need no name server and are read as ever.

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <unistd.h>

namespace {

bool is_number(const char* node)
{
    in6_addr address;
    return inet_pton(AF_INET, node, &address) == 1 || inet_pton(AF_INET6, node, &address) == 1;
}

using GetAddrInfo = int (*)(const char*, const char*, const addrinfo*, addrinfo**);

} // namespace

/// Stands in for getaddrinfo under its name, which netdb.h declares already.
extern "C" int silent_getaddrinfo(const char* node, const char* service, const addrinfo* hints,
                                  addrinfo** result) __asm__("getaddrinfo");

int silent_getaddrinfo(const char* node, const char* service, const addrinfo* hints,
                       addrinfo** result)
{
    if (node != nullptr && !is_number(node)) {
        sleep(10);
        return EAI_AGAIN;
    }
    static const auto next = reinterpret_cast<GetAddrInfo>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return next(node, service, hints, result);
}
