// SPDX-License-Identifier: Apache-2.0

#include "routes/id_listing.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <nmos_instrument/nmos_instrument.h>

#include "records/fill_records.h"
#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

std::vector<std::string> parsed(const std::string& listing)
{
    return nlohmann::json::parse(listing).get<std::vector<std::string>>();
}

bool ends_with_comma(const std::string& listing)
{
    return listing.ends_with(",\n]\n");
}

class IdListing : public testing::Test
{
protected:
    const std::unique_ptr<Records> records_ = make_records(Configuration(), NodeAddress(), {1, 0});
};

TEST_F(IdListing, SendersForEverySelectorAndCount)
{
    NMOS_IS04_ST& node = records_->node;
    for (const bool all : {false, true}) {
        for (int count = 0; count <= 6; ++count) {
            node.senders_count = count;
            std::vector<std::string> expected;
            for (int i = 0; i < count; ++i) {
                if (all || i == 0 || i > 3)
                    expected.push_back(std::string(text_of(node.senders[i].id)) + '/');
            }
            const std::string listing = ConnectionApi().make_single_senders(&node, all);
            SCOPED_TRACE(testing::Message() << "all " << all << ", count " << count);
            EXPECT_EQ(parsed(without_trailing_comma(listing)), expected);
            // The last of these counts are hidden senders.
            EXPECT_EQ(ends_with_comma(listing), !all && count >= 2 && count <= 4);
            EXPECT_EQ(without_trailing_comma(listing) == listing, !ends_with_comma(listing));
        }
    }
}

TEST_F(IdListing, ReceiversForEverySelectorAndCount)
{
    NMOS_IS04_ST& node = records_->node;
    int commas = 0;
    for (const int restricted : {0, 1}) {
        for (const int audio_mode : {0, 1, 2}) {
            const auto is_listed = [&](int i) {
                if (i < 4)
                    return true;
                if (restricted != 0)
                    return false;
                return i >= 20 || audio_mode == 2 || i % 4 <= audio_mode;
            };
            for (int count = 0; count <= 24; ++count) {
                node.receivers_count = count;
                std::vector<std::string> expected;
                for (int i = 0; i < count; ++i) {
                    if (is_listed(i))
                        expected.push_back(std::string(text_of(node.receivers[i].id)) + '/');
                }
                const std::string listing =
                    ConnectionApi().make_single_receivers(&node, restricted, audio_mode);
                SCOPED_TRACE(testing::Message() << "restricted " << restricted << ", audio mode "
                                                << audio_mode << ", count " << count);
                EXPECT_EQ(parsed(without_trailing_comma(listing)), expected);
                EXPECT_EQ(ends_with_comma(listing), count > 0 && !is_listed(count - 1));
                commas += ends_with_comma(listing);
            }
        }
    }
    // Restricted: counts 5 to 24 in three audio modes. Else 12 counts for G1, 8 for G1 and G2.
    EXPECT_EQ(commas, 3 * 20 + 12 + 8);
}

TEST_F(IdListing, OnlyTheCommaGoes)
{
    EXPECT_EQ(without_trailing_comma("[\n  \"a/\",\n  \"b/\",\n]\n"),
              "[\n  \"a/\",\n  \"b/\"\n]\n");
    for (const char* const listing : {"[\n]\n", "[\n  \"a/\"\n]\n", "", "]\n", ",\n]"})
        EXPECT_EQ(without_trailing_comma(listing), listing);
}

} // namespace
} // namespace nmos_instrument::host
