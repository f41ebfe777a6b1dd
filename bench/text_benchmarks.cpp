// SPDX-License-Identifier: Apache-2.0
//
// Every text beside the same text made by other libraries, and beside its floor: one copy of the
// finished text into a fresh string. Names are "<text>/<maker>".

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "counted_heap.h"
#include "example_records.h"
#include "json_events.h"
#include "support/example_node.h"

namespace {

const ExampleRecords& records()
{
    static const ExampleRecords instance = example_records();
    return instance;
}

using Make = std::function<std::string()>;

void add(const std::string& name, const Make& make)
{
    benchmark::RegisterBenchmark(name.c_str(), [make](benchmark::State& state) {
        const HeapCount before = heap_count();
        const std::string text = make();
        const HeapCount after = heap_count();
        for (auto _ : state) {
            std::string again = make();
            benchmark::DoNotOptimize(again.data());
        }
        state.counters["bytes"] = static_cast<double>(text.size());
        state.counters["allocations"] = static_cast<double>(after.allocations - before.allocations);
        state.counters["allocated"] = static_cast<double>(after.bytes - before.bytes);
    });
}

void add_text(const std::string& name, const Make& make)
{
    add(name + "/ours", make);
    add(name + "/copy", [text = make()] { return std::string(text.data(), text.size()); });
}

void add_json(const std::string& name, const Make& make)
{
    add_text(name, make);
    const std::vector<JsonEvent> events = events_of(make());
    for (const std::string& other :
         {by_picojson(events), by_nlohmann(events), by_rapidjson(events)}) {
        if (nlohmann::json::parse(other) != nlohmann::json::parse(make())) {
            std::fprintf(stderr, "%s: the makers do not make the same text\n", name.c_str());
            std::exit(1);
        }
    }
    add(name + "/picojson", [events] { return by_picojson(events); });
    add(name + "/nlohmann", [events] { return by_nlohmann(events); });
    add(name + "/rapidjson", [events] { return by_rapidjson(events); });
}

void add_bodies()
{
    NMOS_IS04_ST* const node = records().node.get();
    NMOS_IS05_ST* const connections = records().connections.get();
    const st_param_sys* const settings = records().settings.get();
    add_json("receivers of 24", [=] { return NodeApi().make_receivers(node, 0, 2); });
    add_json("receiver", [=] { return NodeApi().make_receiverid(node, 5); });
    add_json("senders of 6", [=] { return NodeApi().make_senders(node, 1); });
    add_json("sender", [=] { return NodeApi().make_senderid(node, 0); });
    add_json("node", [=] { return NodeApi().make_self(node); });
    add_json("devices", [=] { return NodeApi().make_devices(node, 0, 2, 1); });
    add_json("sources", [=] { return NodeApi().make_sources(node); });
    add_json("flows", [=] { return NodeApi().make_flows(node); });
    add_json("registrations of 24 receivers",
             [=] { return RegistrationApi().make_resource_receivers(node); });
    add_json("receiver staged",
             [=] { return ConnectionApi().make_single_receiverid_staged(connections, 0); });
    add_json("sender active",
             [=] { return ConnectionApi().make_single_senderid_active(connections, 0); });
    add_json("parameters", [=] { return Nmos().make_param_json(settings, 0); });
    add_text("sdp written",
             [=] { return ConnectionApi().make_single_senderid_sdp(connections, 0, settings); });
    add_text("service file", [] { return Nmos().make_node_service_text(1); });
}

std::string analysed(const std::string& sdp)
{
    std::string errors;
    sdp_str found = sdp_str();
    ConnectionApi().analyze_sdp_file(sdp, true, 3, true, &errors, &found);
    return errors;
}

void add_sdp_analysed()
{
    const std::string& sdp = records().sdp;
    add("sdp analysed/ours", [sdp] { return analysed(sdp); });
    add("sdp analysed/copy", [sdp] { return std::string(sdp.data(), sdp.size()); });
}

/// Cost as the work grows; names end with the size.
void add_growth()
{
    for (int count = 1; count <= 24; count += count < 4 ? 1 : 4) {
        auto node = std::make_shared<NMOS_IS04_ST>(*records().node);
        node->receivers_count = count;
        add("growth receivers/" + std::to_string(count),
            [node] { return NodeApi().make_receivers(node.get(), 0, 2); });
    }
    for (const std::size_t length : {0U, 16U, 32U, 48U, 64U, 80U, 96U, 112U, 127U}) {
        for (const char byte : {'a', '"'}) {
            auto node = std::make_shared<NMOS_IS04_ST>(*records().node);
            for (RECEIVER_IS04_ST& receiver : node->receivers)
                write_text(receiver.description, std::string(length, byte));
            add(std::string(byte == 'a' ? "growth plain text/" : "growth escaped text/") +
                    std::to_string(length),
                [node] { return NodeApi().make_receivers(node.get(), 0, 2); });
        }
    }
    for (std::size_t lines = 10; lines <= 100000; lines *= 10) {
        std::string sdp;
        for (std::size_t i = 0; i < lines; ++i)
            sdp += "a=fmtp:96 width=1920; height=1080; exactframerate=50; TCS=SDR;\r\n";
        add("growth sdp lines/" + std::to_string(lines), [sdp] { return analysed(sdp); });
    }
    for (std::size_t size = 1024; size <= 16 * 1024 * 1024; size *= 4) {
        const std::string sdp = "a=fmtp:96 " + std::string(size - 12, '=') + "\r\n";
        add("growth sdp line length/" + std::to_string(size), [sdp] { return analysed(sdp); });
    }
    // A media id that the file itself names, looked for in a long line that nearly holds it.
    for (std::size_t size = 1024; size <= 1024 * 1024; size *= 4) {
        const std::string sdp = "a=group:DUP " + std::string(size / 3, 'a') +
                                "b secondary\r\na=mid:" + std::string(size - size / 3 - 32, 'a') +
                                "\r\n";
        add("growth sdp media id/" + std::to_string(size), [sdp] { return analysed(sdp); });
    }
}

} // namespace

int main(int argc, char** argv)
{
    add_bodies();
    add_sdp_analysed();
    add_growth();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
