// SPDX-License-Identifier: Apache-2.0

#include "node/page.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

#include "routes/routes.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {

namespace {

/// Braces stand for the id of a resource; a slash at the end is taken away before a file is looked for.
bool is_path(std::string_view path)
{
    return path.size() > 1 && path.front() == '/' && path.back() != '/' &&
           path.find_first_of("{}") == path.npos;
}

/// A file that nobody could get is a mistake of whoever gives it.
void expect_possible(const std::vector<nmos_instrument_host::PageFile>& files)
{
    std::vector<std::string_view> taken = all_routes({}).paths();
    for (const nmos_instrument_host::PageFile& file : files) {
        if (!is_path(file.path) || std::find(taken.begin(), taken.end(), file.path) != taken.end())
            throw std::invalid_argument("Options::page: found " + in_quotes(file.path) +
                                        ", allowed: a path like \"/panel/page.js\" that nothing "
                                        "else has, without braces");
        taken.push_back(file.path);
    }
}

} // namespace

Page::Page(const std::vector<nmos_instrument_host::PageFile>& files)
{
    expect_possible(files);
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
