// SPDX-License-Identifier: Apache-2.0
//
// The part of an instrument that says where it is: its address in the records, and its service file.

#include "instrument/instrument.h"

#include <cstdint>
#include <memory>
#include <utility>

#include "records/resource_version.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

NodeAddress Instrument::address()
{
    const std::lock_guard lock(mutex_);
    return address_;
}

void Instrument::begin_at(const NodeAddress& address)
{
    const std::lock_guard lock(mutex_);
    set_address(records_->node, address);
    address_ = address;
}

void Instrument::move_to(const NodeAddress& address)
{
    const std::string line = "others reach the instrument at " + base_url(address) + " from now on";
    {
        const std::lock_guard lock(mutex_);
        if (address == address_)
            return;
        move_locked(address);
    }
    if (listeners_.changed)
        listeners_.changed();
    log_.line(LogLevel::info, line);
}

/// All that may fail happens to a copy.
void Instrument::move_locked(const NodeAddress& address)
{
    NodeAddress next = address;
    const auto moved = std::make_unique<NMOS_IS04_ST>(records_->node);
    const TaiTime now = clock_();
    set_address(*moved, address);
    advance_version(*moved, now);
    moved->version_seconds = now.seconds;
    moved->version_nanoseconds = now.nanoseconds;
    advance_version(moved->devices[0], now);
    for (std::int32_t i = 0; i < moved->senders_count; ++i)
        advance_version(moved->senders[i], now);

    records_->node = *moved;
    std::swap(address_, next);
    advertisement_.update_txt_ver_slf();
    advertisement_.update_txt_ver_dvc();
    advertisement_.update_txt_ver_snd();
}

std::string Instrument::service_text()
{
    constexpr int http = 0;
    constexpr int enabled = 1;
    const std::lock_guard lock(mutex_);
    advertisement_.update_txt_port_number(address_.port);
    advertisement_.update_txt_protocol(http);
    return advertisement_.make_node_service_text(enabled);
}

} // namespace nmos_instrument::host
