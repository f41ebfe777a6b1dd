// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_NETWORKCONTROLAPI_H
#define NMOS_INSTRUMENT_NETWORKCONTROLAPI_H

#include "nmos_instrument/export.h"

/// A class without operations. It keeps the place of a network control interface in the binary
/// interface; constructing and destroying it does nothing.
class NMOS_INSTRUMENT_EXPORT NetworkControlApi
{
public:
    NetworkControlApi();
    ~NetworkControlApi();
};

#endif
