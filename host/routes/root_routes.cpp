// SPDX-License-Identifier: Apache-2.0

#include <nmos_instrument/nmos_instrument.h>

#include "routes/routes.h"

namespace nmos_instrument::host {
namespace {

RouteAnswer text(std::string body)
{
    return
        [body = std::move(body)](const HttpRequest&, std::size_t) { return json_response(body); };
}

} // namespace

void add_root_routes(Router& router)
{
    router.get("/", text(Nmos().make_xnmos()));
    router.get("/x-nmos", text(Nmos().make_api()));
    // The root listing names it, so it is there; nothing below it is.
    router.get("/x-nmos/registration", text(RegistrationApi().make_version()));
    router.get("/x-nmos/registration/v1.2", text(RegistrationApi().make_base(nullptr)));
    router.explain_missing("/x-nmos/registration/",
                           "Not found: this node is no registry, it only registers with one");
}

} // namespace nmos_instrument::host
