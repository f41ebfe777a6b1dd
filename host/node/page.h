// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_NODE_PAGE_H
#define NMOS_INSTRUMENT_HOST_NODE_PAGE_H

#include <vector>

#include "routes/router.h"
#include "routes/static_file.h"
#include <nmos_instrument_host/http.h>

namespace nmos_instrument::host {

/// The files that an integrator serves beside the APIs, as routes.
class Page
{
public:
    explicit Page(const std::vector<nmos_instrument_host::PageFile>& files);

    // The routes point into it.
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    BrowserPage routes() const { return {routes_, root_}; }

private:
    std::vector<StaticFile> files_;
    std::vector<Route> routes_;
    const StaticFile* root_ = nullptr;
};

} // namespace nmos_instrument::host

#endif
