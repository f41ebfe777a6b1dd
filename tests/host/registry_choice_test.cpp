// SPDX-License-Identifier: Apache-2.0

#include "registration/registry_choice.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace nmos_instrument::host {
namespace {

Registry registry(const std::string& url, int priority)
{
    return {url, "", priority, "mDNS"};
}

std::string order(RegistryChoice& choice)
{
    std::string urls;
    while (const std::optional<Registry> next = choice.take("node"))
        urls += next->url + ' ';
    return urls;
}

/// Gives these numbers, one after the other.
std::function<double()> numbers(std::vector<double> list)
{
    return [list, next = std::size_t{0}]() mutable { return list.at(next++); };
}

TEST(RegistryChoice, TheLowestPriorityComesFirst)
{
    RegistryChoice choice(numbers({0.1, 0.2, 0.3}));
    choice.update({registry("c", 20), registry("a", 0), registry("b", 10)});
    EXPECT_EQ(order(choice), "a b c ");
    EXPECT_EQ(order(choice), ""); // each once in a round
    choice.begin_round();
    EXPECT_EQ(order(choice), "a b c ");
}

TEST(RegistryChoice, ChanceDecidesAmongEqualsOnce)
{
    RegistryChoice choice(numbers({0.7, 0.1, 0.4, 0.2}));
    choice.update({registry("a", 5), registry("b", 5), registry("c", 5)});
    EXPECT_EQ(order(choice), "b c a ");
    choice.update({registry("c", 5), registry("a", 5), registry("b", 5), registry("d", 5)});
    choice.begin_round();
    EXPECT_EQ(order(choice), "b d c a "); // d has 0.2, the others keep what they had
}

TEST(RegistryChoice, WhoeverComesBackGetsAnotherPlace)
{
    RegistryChoice choice(numbers({0.1, 0.5, 0.9}));
    choice.update({registry("a", 5), registry("b", 5)});
    EXPECT_EQ(order(choice), "a b ");
    choice.update({registry("b", 5)});
    choice.update({registry("a", 5), registry("b", 5)});
    EXPECT_EQ(order(choice), "a "); // not tried yet
    choice.begin_round();
    EXPECT_EQ(order(choice), "b a ");
}

TEST(RegistryChoice, EachAddressOfARegistryIsTried)
{
    RegistryChoice choice(numbers({0.1, 0.2}));
    const Registry one{"a", "192.0.2.1", 5, "mDNS"};
    const Registry other{"a", "192.0.2.2", 5, "mDNS"};
    choice.update({one, other});
    choice.begin_round(one); // in use
    choice.update({other, one});
    EXPECT_EQ(choice.take("node"), other);
    EXPECT_EQ(choice.take("node"), std::nullopt);
}

TEST(RegistryChoice, ANewPriorityCounts)
{
    RegistryChoice choice(numbers({0.1, 0.2}));
    choice.update({registry("a", 5), registry("b", 6)});
    choice.update({registry("a", 7), registry("b", 6)});
    EXPECT_EQ(order(choice), "b a ");
}

TEST(RegistryChoice, ARefusedNodeIsNotOfferedAgainUnchanged)
{
    RegistryChoice choice(numbers({0.1, 0.2}));
    choice.update({registry("a", 5), registry("b", 6)});
    choice.note_refusal("a", "node");
    EXPECT_EQ(order(choice), "b ");
    choice.begin_round();
    EXPECT_EQ(choice.take("node with another label")->url, "a");
    choice.update({registry("b", 6)});
    EXPECT_FALSE(choice.has("a"));
}

} // namespace
} // namespace nmos_instrument::host
