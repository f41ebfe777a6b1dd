// SPDX-License-Identifier: Apache-2.0

#include "instrument/file_writer.h"

#include <exception>
#include <new>
#include <utility>

namespace nmos_instrument::host {

std::string reason_of_current_exception()
{
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return "out of memory";
    } catch (const std::exception& error) {
        try {
            return error.what();
        } catch (const std::bad_alloc&) {
            return "out of memory";
        }
    }
}

FileWriter::~FileWriter()
{
    if (!thread_.joinable())
        return;
    if (outcome_.wait_for(std::chrono::seconds(0)) == std::future_status::ready)
        thread_.join();
    else
        thread_.detach();
}

void FileWriter::start(std::string text)
{
    std::packaged_task<void()> write(
        [file = file_, text = std::move(text)] { file.replace(text); });
    outcome_ = write.get_future();
    thread_ = std::thread(std::move(write));
}

std::optional<std::string> FileWriter::outcome_within(std::chrono::milliseconds time)
{
    if (outcome_.wait_for(time) != std::future_status::ready)
        return std::nullopt;
    thread_.join();
    try {
        outcome_.get();
        return "";
    } catch (...) {
        return reason_of_current_exception();
    }
}

} // namespace nmos_instrument::host
