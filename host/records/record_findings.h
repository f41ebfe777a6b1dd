// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_RECORD_FINDINGS_H
#define NMOS_INSTRUMENT_HOST_RECORDS_RECORD_FINDINGS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nmos_instrument::host {

/// "senders[2].flow_id"
std::string path_of(std::string_view array, std::size_t index, std::string_view member = {});

/// What is wrong with records: a line each, "records: PATH is FOUND, allowed ALLOWED".
class RecordFindings
{
public:
    void refuse(const std::string& path, const std::string& found, const std::string& allowed);

    /// `why` follows the value that is allowed: ", as senders_count".
    void expect_number(const std::string& path, double found, double allowed,
                       std::string_view why = {});
    void expect_text(const std::string& path, std::string_view found, std::string_view allowed,
                     std::string_view why = {});

    /// What check_record found.
    void add(const std::vector<std::string>& findings);

    /// Throws std::invalid_argument with all lines, if there are any.
    void expect_none() const;

private:
    std::vector<std::string> lines_;
};

/// As a finding shows it: a whole number without a fraction.
std::string number_text(double number);

} // namespace nmos_instrument::host

#endif
