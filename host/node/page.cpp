// SPDX-License-Identifier: Apache-2.0

#include "node/page.h"

namespace nmos_instrument::host {

Page::Page(const std::vector<nmos_instrument_host::PageFile>& files)
{
    files_.reserve(files.size()); // so that none moves any more
    routes_.reserve(files.size());
    for (const nmos_instrument_host::PageFile& file : files) {
        files_.push_back({file.content_type, file.etag, file.content});
        routes_.push_back({"GET", file.path, &files_.back()});
        if (file.at_root)
            root_ = &files_.back();
    }
}

} // namespace nmos_instrument::host
