// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_PUT_BACK_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_PUT_BACK_H

#include <cstring>
#include <type_traits>

namespace nmos_instrument::host {

/// Puts a value back to what it was, at the end of the scope and however that ends; unless it was
/// told to let the value be.
template <class T>
class PutBack
{
public:
    static_assert(std::is_trivially_copyable_v<T>);

    explicit PutBack(T& value) : value_(value) { std::memcpy(&before_, &value, sizeof before_); }
    ~PutBack()
    {
        if (!let_be_)
            std::memcpy(&value_, &before_, sizeof before_);
    }
    PutBack(const PutBack&) = delete;
    PutBack& operator=(const PutBack&) = delete;

    void let_be() { let_be_ = true; }

private:
    T& value_;
    T before_;
    bool let_be_ = false;
};

} // namespace nmos_instrument::host

#endif
