// SPDX-License-Identifier: Apache-2.0
//
// Bodies with plain slashes are defined as the escaped text in which every "\/" was replaced. The
// library writes plain slashes at once; here that is compared with the replacement, done by
// Nmos::replaceAll on the finished text, and replaceAll with a replacement of our own.

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "nmos_instrument/nmos_instrument.h"
#include "oracle/json_oracle.h"
#include "oracle/random.h"
#include "oracle/random_records.h"
#include "oracle/run.h"

namespace {

std::string with_slashes_replaced(std::string text)
{
    Nmos().replaceAll(text, "\\/", "/");
    return text;
}

TEST(PlainSlashes, SourcesAreTheSingleSourcesWithEscapesReplaced)
{
    const auto record = std::make_unique<NMOS_IS04_ST>();
    for_each_record(10, [&](Random& random) {
        randomise(random, *record);
        record->sources_count = random.between(1, 4);
        NodeApi api;
        std::string escaped = "[";
        for (int i = 0; i < record->sources_count; ++i)
            escaped += (i > 0 ? "," : "") + api.make_sourceid(record.get(), i);
        escaped += "]";
        EXPECT_TRUE(same_bytes(api.make_sources(record.get()), with_slashes_replaced(escaped)));
    });
}

TEST(PlainSlashes, AFlowIsItsRegistrationWithEscapesReplaced)
{
    const auto record = std::make_unique<NMOS_IS04_ST>();
    for_each_record(10, [&](Random& random) {
        randomise(random, *record);
        record->flows_count = 4;
        for (const int index : {2, 3}) { // these two have no number that could be refused
            const std::string plain = NodeApi().make_flowid(record.get(), index);
            const std::string escaped = RegistrationApi().make_resource_flowid(record.get(), index);
            EXPECT_TRUE(same_bytes("{\"data\":" + plain + ",\"type\":\"flow\"}",
                                   with_slashes_replaced(escaped)));
        }
    });
}

std::string random_letters(Random& random, std::string_view letters, std::uint32_t longest)
{
    std::string text(random.below(longest + 1), ' ');
    for (char& letter : text)
        letter = random.pick(letters);
    return text;
}

TEST(ReplaceAll, AgreesWithAPlainReplacement)
{
    using namespace std::string_view_literals;
    constexpr std::string_view alphabets[] = {"a"sv, "ab"sv, "\\/"sv, "\\/\"n"sv, "a\0\xff"sv};
    for_each_record(50, [&](Random& random) {
        const std::string_view letters = random.pick(alphabets);
        const std::string before = random_letters(random, letters, 40);
        const std::string from = random_letters(random, letters, 3);
        const std::string to = random_letters(random, letters, 4);
        std::string text = before;
        const std::string copy = Nmos().replaceAll(text, from, to);
        EXPECT_EQ(text, oracle::replaced(before, from, to))
            << visible(before) << ", " << visible(from) << " by " << visible(to);
        EXPECT_EQ(copy, text);
    });
}

} // namespace
