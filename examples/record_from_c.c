// SPDX-License-Identifier: Apache-2.0
//
// A host in C: fills a record, and asks for the node and its receivers. C11, no C++ anywhere.

#include <stdio.h>
#include <stdlib.h>

#include "nmos_instrument_c.h"

/// The field is always ended by a NUL; a longer text is cut.
#define SET_TEXT(field, text) snprintf(field, sizeof(field), "%s", text)

static void fill(NMOS_IS04_ST* node)
{
    SET_TEXT(node->id, "2a14b7a2-5a0c-4a43-b7b0-9cf0a2b1c001");
    SET_TEXT(node->label, "Rack 4");
    SET_TEXT(node->href, "http://192.0.2.10:3000/");
    SET_TEXT(node->hostname, "rack4");
    node->version_seconds = 1541234567; // from the host's clock, TAI

    RECEIVER_IS04_ST* video = &node->receivers[0];
    node->receivers_count = 1;
    SET_TEXT(video->id, "2a14b7a2-5a0c-4a43-b7b0-9cf0a2b1c002");
    SET_TEXT(video->label, "Video of stream 1");
    SET_TEXT(video->transport, "urn:x-nmos:transport:rtp.mcast");
    SET_TEXT(video->format, "urn:x-nmos:format:video");
    SET_TEXT(video->media_types[0], "video/raw");
    video->media_types_count = 1;
    SET_TEXT(video->subscription[0].peer_id, "null");
    video->subscription_count = 1;
}

static int fail(const char* what, const char* why)
{
    fprintf(stderr, "%s: %s\n", what, why);
    return EXIT_FAILURE;
}

int main(void)
{
    static NMOS_IS04_ST node; // 80 KB, all zero; too large for a small stack
    fill(&node);
    nmos_registration_update_version(&node);

    // A buffer that should do. The result says whether it did.
    char self[1024];
    size_t length = nmos_node_self(&node, self, sizeof self);
    if (length >= NMOS_ERROR_FIRST)
        return fail("node", nmos_error_text(length));
    if (length >= sizeof self)
        return fail("node", "the buffer is too small");
    printf("%s\n", self);

    // Or a buffer that is as large as it must be: ask first, then make room.
    length = nmos_node_receivers(&node, 0, 2, NULL, 0);
    if (length >= NMOS_ERROR_FIRST)
        return fail("receivers", nmos_error_text(length));
    char* receivers = malloc(length + 1);
    if (receivers == NULL)
        return fail("receivers", "no memory is left");
    nmos_node_receivers(&node, 0, 2, receivers, length + 1);
    printf("%s\n", receivers);
    free(receivers);
    return EXIT_SUCCESS;
}
