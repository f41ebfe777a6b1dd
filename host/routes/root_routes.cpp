// SPDX-License-Identifier: Apache-2.0

#include <nmos_instrument/nmos_instrument.h>

#include "routes/routes.h"

namespace nmos_instrument::host {
namespace {

constexpr Route table[] = {
    {"GET", "/", [](Records&, int) { return Nmos().make_xnmos(); }},
    {"GET", "/x-nmos", [](Records&, int) { return Nmos().make_api(); }},
    {"GET", "/x-nmos/registration", [](Records&, int) { return RegistrationApi().make_version(); }},
    {"GET", "/x-nmos/registration/v1.2",
     [](Records& records, int) { return RegistrationApi().make_base(&records.node); }},
};

} // namespace

std::span<const Route> root_routes()
{
    return table;
}

} // namespace nmos_instrument::host
