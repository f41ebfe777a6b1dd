// SPDX-License-Identifier: Apache-2.0

#include "registration/registry_answer.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "text/ascii.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

bool is_success(int status)
{
    return status >= 200 && status < 300;
}

bool is_refusal(int status)
{
    constexpr std::array about_the_registry = {404, 405, 408, 429};
    return status >= 400 && status < 500 &&
           std::find(about_the_registry.begin(), about_the_registry.end(), status) ==
               about_the_registry.end();
}

} // namespace

PostAnswer post_answer(const ClientAnswer& answer)
{
    if (answer.status == 200)
        return PostAnswer::updated;
    if (is_success(answer.status))
        return PostAnswer::created;
    return is_refusal(answer.status) ? PostAnswer::refused : PostAnswer::failed;
}

HeartbeatAnswer heartbeat_answer(const ClientAnswer& answer)
{
    if (is_success(answer.status))
        return HeartbeatAnswer::accepted;
    return answer.status == 404 ? HeartbeatAnswer::unknown : HeartbeatAnswer::failed;
}

DeleteAnswer delete_answer(const ClientAnswer& answer)
{
    if (is_success(answer.status) || answer.status == 404)
        return DeleteAnswer::deleted;
    return answer.status >= 400 && answer.status < 500 ? DeleteAnswer::refused
                                                       : DeleteAnswer::failed;
}

std::string shown_answer(const ClientAnswer& answer)
{
    if (answer.status == 0)
        return answer.why;
    constexpr std::size_t shown_length = 1'000;
    std::string text = "it answered " + std::to_string(answer.status);
    if (!answer.location.empty())
        text += ", see " + in_quotes(answer.location);
    if (!answer.body.empty())
        text += ": " + printable(std::string_view(answer.body).substr(0, shown_length));
    return text;
}

std::string reason_of_failure(const ClientAnswer& answer)
{
    if (answer.status != 0)
        return std::to_string(answer.status);
    std::string reason = answer.why;
    std::erase_if(reason, is_digit);
    return reason;
}

} // namespace nmos_instrument::host
