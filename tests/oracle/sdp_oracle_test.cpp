// SPDX-License-Identifier: Apache-2.0
//
// SDP files written, checked and cut into lines: the library against a plain second implementation.

#include "oracle/sdp_oracle.h"

#include <climits>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "nmos_instrument/nmos_instrument.h"
#include "oracle/random.h"
#include "oracle/random_records.h"
#include "oracle/random_sdp_files.h"
#include "oracle/run.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// Status of a call that ended by std::out_of_range.
constexpr int thrown = -1;

/// All that analyze_sdp_file leaves behind.
struct Analysis
{
    int status;
    std::string exception;
    std::string errors;
    sdp_str found;
};

template <class Call>
Analysis analysis_of(const sdp_str& before, Call call)
{
    Analysis analysis{0, "", "errors of the last call", before};
    try {
        analysis.status = call(analysis.errors, analysis.found);
    } catch (const std::out_of_range& error) {
        analysis.status = thrown;
        analysis.exception = error.what();
    }
    return analysis;
}

/// A record of an earlier file: what is not found must stay.
sdp_str random_earlier_file(Random& random)
{
    sdp_str found = sdp_str();
    found.found_flags = static_cast<std::uint32_t>(random.bits());
    found.size_interlaced = static_cast<std::uint8_t>(random.bits());
    found.rate_interlaced = static_cast<std::uint8_t>(random.bits());
    int number = 0;
    for (std::string* const text :
         {&found.source_ip[0], &found.source_ip[1], &found.multicast_ip[0], &found.multicast_ip[1],
          &found.destination_port[0], &found.destination_port[1], &found.rtp_payload_type,
          &found.sampling, &found.depth, &found.width, &found.height, &found.exactframerate,
          &found.colorimetry, &found.packing_mode, &found.tcs})
        *text = "earlier " + std::to_string(number++);
    return found;
}

void expect_same_values(const sdp_str& of_library, const sdp_str& of_oracle)
{
    EXPECT_EQ(of_library.found_flags, of_oracle.found_flags);
    for (const int leg : {0, 1}) {
        EXPECT_EQ(of_library.source_ip[leg], of_oracle.source_ip[leg]) << "leg " << leg;
        EXPECT_EQ(of_library.multicast_ip[leg], of_oracle.multicast_ip[leg]) << "leg " << leg;
        EXPECT_EQ(of_library.destination_port[leg], of_oracle.destination_port[leg])
            << "leg " << leg;
    }
    EXPECT_EQ(of_library.rtp_payload_type, of_oracle.rtp_payload_type);
    EXPECT_EQ(of_library.sampling, of_oracle.sampling);
    EXPECT_EQ(of_library.depth, of_oracle.depth);
    EXPECT_EQ(of_library.width, of_oracle.width);
    EXPECT_EQ(of_library.height, of_oracle.height);
    EXPECT_EQ(of_library.exactframerate, of_oracle.exactframerate);
    EXPECT_EQ(of_library.size_interlaced, of_oracle.size_interlaced);
    EXPECT_EQ(of_library.rate_interlaced, of_oracle.rate_interlaced);
    EXPECT_EQ(of_library.colorimetry, of_oracle.colorimetry);
    EXPECT_EQ(of_library.packing_mode, of_oracle.packing_mode);
    EXPECT_EQ(of_library.tcs, of_oracle.tcs);
}

Analysis compare_analyses(Random& random, const std::string& sdp)
{
    constexpr short formats[] = {0, 1,  2,  3,  4,  5,  6,   7,        8,
                                 9, 10, 11, 12, -1, -8, 265, SHRT_MIN, SHRT_MAX};
    const bool switch_capable = random.one_in(2);
    const bool switch_allowed = random.one_in(2);
    const short current_format = random.pick(formats);
    const sdp_str before = random_earlier_file(random);

    const Analysis of_library = analysis_of(before, [&](std::string& errors, sdp_str& found) {
        return ConnectionApi().analyze_sdp_file(sdp, switch_capable, current_format, switch_allowed,
                                                &errors, &found);
    });
    Analysis of_oracle = analysis_of(before, [&](std::string& errors, sdp_str& found) {
        return oracle::analyze_sdp_file(sdp, switch_capable, current_format, switch_allowed, errors,
                                        found);
    });
    EXPECT_EQ(of_library.status, of_oracle.status) << of_library.exception;
    EXPECT_TRUE(same_bytes(of_library.errors, of_oracle.errors)) << "messages";
    expect_same_values(of_library.found, of_oracle.found);
    if (of_library.status == thrown) {
        EXPECT_THAT(of_library.exception, StartsWith("basic_string::substr"));
    }
    if (testing::Test::HasFailure()) {
        std::cout << "switch_capable " << switch_capable << ", current_format " << current_format
                  << ", switch_allowed " << switch_allowed << ", file:\n"
                  << testing::PrintToString(sdp) << std::endl;
    }
    return of_oracle;
}

/// Whether the random files came to everything that the parser can say, so that a comparison of
/// nothing but clean files is noticed.
class Coverage
{
public:
    void note(const Analysis& analysis)
    {
        ++files_;
        clean_ += analysis.status == 200;
        thrown_ += analysis.status == thrown;
        flags_ |= analysis.found.found_flags;
        for (std::size_t i = 0; i < std::size(messages); ++i)
            seen_[i] += analysis.errors.find(messages[i]) != std::string::npos;
    }

    void expect_all() const
    {
        if (files_ < 5000)
            return;
        EXPECT_GT(clean_, 0u);
        EXPECT_GT(thrown_, 0u);
        EXPECT_EQ(flags_, 0x1FFFu);
        for (std::size_t i = 0; i < std::size(messages); ++i)
            EXPECT_GT(seen_[i], 0u) << messages[i];
    }

private:
    static constexpr const char* messages[] = {
        "is invalid source address.\n",
        "IN IP4 ",
        "is invalid multicast address.\n",
        "incl IN IP4 ",
        "Destination Port ",
        "RTP/AVP ",
        "rtpmap: ",
        "fmtp: ",
        "(sampling= ",
        "Switching 2K/4K is not supported. \n",
        "Switching 2K/4K is denied by the setting. \n",
        ") is no support parameter. \n",
        ", interlace) is no support parameter.\n",
        "exactframerate: ",
        "TCS= ",
        "colorimetry: ",
        "PM= ",
        "SSN= ",
        "TP= ",
    };
    unsigned files_ = 0;
    unsigned clean_ = 0;
    unsigned thrown_ = 0;
    std::uint32_t flags_ = 0;
    unsigned seen_[std::size(messages)] = {};
};

TEST(SdpParserOracle, EditedFiles)
{
    Coverage coverage;
    for_each_record(70, [&](Random& random) {
        coverage.note(compare_analyses(random, edited_sdp_file(random)));
    });
    coverage.expect_all();
}

TEST(SdpParserOracle, TokenHeaps)
{
    Coverage coverage;
    for_each_record(30, [&](Random& random) {
        coverage.note(compare_analyses(random, sdp_token_heap(random)));
    });
    coverage.expect_all();
}

TEST(SdpLinesOracle, ConvertCrlf)
{
    constexpr const char* newlines[] = {"\n", "\r\n", "", "<br/>", "\r"};
    for_each_record(30, [&](Random& random) {
        using namespace std::string_view_literals;
        std::string text(random.below(20), ' ');
        for (char& byte : text)
            byte = random.pick("\r\r\r\n\n\na\0"sv);
        if (random.one_in(2))
            text = edited_sdp_file(random);
        const std::string newline = random.pick(newlines);
        EXPECT_EQ(ConnectionApi::convertCRLF(text, newline), oracle::convert_crlf(text, newline));
    });
}

TEST(SdpLinesOracle, SplitString)
{
    using namespace std::string_view_literals;
    constexpr std::string_view pieces[] = {
        ","sv,   ","sv,  ",,"sv,         "\n"sv,  "a"sv,  "ab"sv,         " "sv,
        "\t"sv,  "-"sv,  "+"sv,          "0"sv,   "42"sv, "2147483647"sv, "2147483648"sv,
        "0x1"sv, "\0"sv, "9999999999"sv, "-12"sv, ".5"sv,
    };
    constexpr std::string_view delimiters[] = {","sv, ",,"sv, "\n"sv, "ab"sv, ""sv, "\0"sv, "a"sv};
    constexpr int sizes[] = {0, -1, INT_MIN, 1, 2, 3, 10, 100};
    for_each_record(50, [&](Random& random) {
        std::string text;
        for (int count = random.between(0, 12); count > 0; --count)
            text += random.pick(pieces);
        const std::string delimiter(random.pick(delimiters));
        const int max_parts = random.pick(sizes);

        const oracle::SplitText expected = oracle::split_string(text, delimiter, max_parts);
        // Exactly as long as promised: a memory checker sees an entry too far.
        std::vector<std::string> parts(max_parts > 0 ? static_cast<std::size_t>(max_parts) : 0,
                                       "untouched");
        int count = -1;
        EXPECT_EQ(ConnectionApi::split_string(text, delimiter, parts.data(), max_parts, &count), 0);
        EXPECT_EQ(count, expected.count);
        std::vector<std::string> expected_parts = expected.entries;
        expected_parts.resize(parts.size(), "untouched");
        EXPECT_EQ(parts, expected_parts)
            << testing::PrintToString(text) << " at " << testing::PrintToString(delimiter);
    });
}

TEST(SdpLinesOracle, MakeFullpathFromRequest)
{
    using namespace std::string_view_literals;
    constexpr std::string_view pieces[] = {"GET "sv, "/"sv,  "x-nmos"sv,    " HTTP/1.1"sv, "\r\n"sv,
                                           "PUT"sv,  "\0"sv, "123456789"sv, ""sv};
    for_each_record(20, [&](Random& random) {
        std::string line;
        for (int count = random.between(0, 6); count > 0; --count)
            line += random.pick(pieces);
        const std::string before = line;
        if (line.find('/') == std::string::npos) {
            EXPECT_THROW(ConnectionApi::make_fullpath_from_request(line), std::out_of_range);
        } else {
            EXPECT_EQ(ConnectionApi::make_fullpath_from_request(line),
                      oracle::make_fullpath_from_request(line));
        }
        EXPECT_EQ(line, before);
    });
}

TEST(SdpWriterOracle, AllSenders)
{
    for_each_record(20, [](Random& random) {
        ConnectionState state(random);
        st_param_sys parameters;
        randomise(random, parameters);
        // Elsewhere a port may be refused; here every double prints.
        constexpr double ports[] = {0.5, 1.5, 2.5, 5004.5, 65535.5, 1e308, -1e308, 1e15};
        if (random.one_in(2))
            state.record().senders[random.below(6)].active.transport_params[0].destination_port =
                random.pick(ports);
        const ConnectionState before = state;
        for (int index = 0; index < 6; ++index)
            EXPECT_TRUE(same_bytes(
                ConnectionApi().make_single_senderid_sdp(&state.record(), index, &parameters),
                oracle::make_single_senderid_sdp(state.record(), index, parameters)))
                << "sender " << index;
        EXPECT_TRUE(state == before) << "the writer wrote into its record";
    });
}

TEST(SdpWriterOracle, RefusedIndices)
{
    Random random(1);
    ConnectionState state(random);
    st_param_sys parameters = {};
    for (const int index : {-1, 6, 7, INT_MIN, INT_MAX}) {
        EXPECT_THROW(oracle::make_single_senderid_sdp(state.record(), index, parameters),
                     std::out_of_range);
        try {
            ConnectionApi().make_single_senderid_sdp(&state.record(), index, &parameters);
            ADD_FAILURE() << "index " << index << " was taken";
        } catch (const std::out_of_range& error) {
            EXPECT_THAT(error.what(), HasSubstr("make_single_senderid_sdp"));
            EXPECT_THAT(error.what(), HasSubstr(std::to_string(index)));
            EXPECT_THAT(error.what(), HasSubstr("5"));
        }
    }
}

} // namespace
