// SPDX-License-Identifier: Apache-2.0

#include "configuration/registry_url.h"

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

TEST(RegistryUrl, NamesTheRegistrationApiInOneSpelling)
{
    const struct
    {
        const char* written;
        const char* meant;
    } cases[] = {
        {"http://registry.example", "http://registry.example/x-nmos/registration/v1.2"},
        {"http://registry.example/", "http://registry.example/x-nmos/registration/v1.2"},
        {"HTTP://Registry.Example:8080", "http://registry.example:8080/x-nmos/registration/v1.2"},
        {"https://192.0.2.5:443/x-nmos/registration",
         "https://192.0.2.5:443/x-nmos/registration/v1.2"},
        {"https://192.0.2.5/x-nmos/registration/", "https://192.0.2.5/x-nmos/registration/v1.2"},
        {"http://[2001:DB8::1]:80/x-nmos/registration/v1.2",
         "http://[2001:db8::1]:80/x-nmos/registration/v1.2"},
        {"http://a/x-nmos/registration/v1.2/", "http://a/x-nmos/registration/v1.2"},
    };
    for (const auto& one : cases)
        EXPECT_EQ(registry_url(one.written), one.meant) << one.written;
}

TEST(RegistryUrl, RefusesWhatIsNone)
{
    for (const char* url : {
             "",
             "registry.example",
             "registry.example:8080",
             "//registry.example",
             "ftp://registry.example",
             "http:registry.example",
             "http://",
             "http:///",
             "http://:8080",
             "http://a:0",
             "http://a:00",
             "http://a:65536",
             "http://a:x",
             "http://a b",
             "http://user@a",
             "http://user:password@a",
             "http://a?b",
             "http://a/?b",
             "http://a/#b",
             "http://a/x-nmos",
             "http://a/x-nmos/registration/v1.3",
             "http://a/x-nmos/registration/v1.2/resource",
             "http://a/x-nmos/registration/v1.2//",
             "http://a//",
             "http://a/v1.2",
             "http://a/%78-nmos/registration",
             "http://[::1",
             "http://[fe80::1%25eth0]",
             "http://[fe80::1%eth0]",
         })
        EXPECT_EQ(registry_url(url), std::nullopt) << url;
}

} // namespace
} // namespace nmos_instrument::host
