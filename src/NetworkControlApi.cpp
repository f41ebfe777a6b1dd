// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/NetworkControlApi.h"

#include "label_tables.h"

NetworkControlApi::NetworkControlApi() = default;
NetworkControlApi::~NetworkControlApi() = default;
