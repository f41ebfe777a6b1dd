// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_STREAMED_ANSWER_H
#define NMOS_INSTRUMENT_HOST_HTTP_STREAMED_ANSWER_H

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "http/event_loop.h"
#include "http/stream.h"

struct MHD_Connection;

namespace nmos_instrument::host {

/// Where the pieces of a stream meet its connection, which is suspended while there is nothing to
/// say. Other threads resume it so that the stream is asked again, or end it.
class StreamedAnswer
{
public:
    /// `loop` is that of the server thread.
    StreamedAnswer(std::shared_ptr<HttpStream> stream, MHD_Connection* connection,
                   const EventLoop& loop)
        : stream_(std::move(stream)), connection_(connection), loop_(loop)
    {}

    // On the server thread, until the request has ended:

    /// How much of the piece has not been taken yet.
    std::size_t left() const { return piece_.size() - taken_; }

    /// Copies the next bytes of the piece, and forgets it after the last of them.
    std::size_t take(char* to, std::size_t most);

    enum class Next
    {
        piece,
        later, ///< the connection is suspended, and nothing more may be done with it
        end
    };

    /// Asks the stream for another piece. Throws what the stream throws.
    Next ask();

    bool is_ending();

    // On any thread, also when the request has ended:

    /// If the connection is suspended, it is resumed, so that the stream is asked again.
    void ask_again() noexcept;

    /// From here on the stream is not asked any more, and nothing more of its piece is sent.
    void end_soon() noexcept;

private:
    bool suspend();
    void resume() noexcept;

    const std::shared_ptr<HttpStream> stream_;
    std::string piece_;
    std::size_t taken_ = 0;

    MHD_Connection* const connection_; ///< exists as long as it is suspended
    const EventLoop& loop_;
    std::mutex mutex_;
    bool suspended_ = false;
    bool ending_ = false;
};

} // namespace nmos_instrument::host

#endif
