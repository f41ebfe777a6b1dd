// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_METRICS_OUTPUT_H
#define NMOS_INSTRUMENT_HOST_TEXT_METRICS_OUTPUT_H

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace nmos_instrument::host {

/// A page of metrics in the text format 0.0.4 of Prometheus: for each metric what it means, its
/// type, and a line for each of its values. Names and meanings are ours; labels may be any text.
class MetricsOutput
{
public:
    using Labels = std::initializer_list<std::pair<std::string_view, std::string_view>>;

    // A metric begins; its values follow.
    void counter(std::string_view name, std::string_view help) { begin(name, "counter", help); }
    void gauge(std::string_view name, std::string_view help) { begin(name, "gauge", help); }

    void value(std::uint64_t value, Labels labels = {});
    void value(std::chrono::microseconds value); ///< in seconds, which is the format's unit

    /// A metric of its own: how long things took together, and how many there were.
    void summary(std::string_view name, std::string_view help, std::chrono::microseconds sum,
                 std::uint64_t count);

    std::string take() { return std::move(text_); }

private:
    void begin(std::string_view name, std::string_view type, std::string_view help);
    void line(std::string_view suffix, Labels labels, std::string_view value);

    std::string text_;
    std::string name_; ///< of the metric
};

} // namespace nmos_instrument::host

#endif
