// SPDX-License-Identifier: Apache-2.0
// The same facts by other ways: libexif, Exiv2 (both only where they are installed), and the system calls
// that no way can do without.
#pragma once

#include <string>
#include <vector>

#include "Support/CameraPhotos.h"

namespace fi::bench {

struct PeerExif {
    const char* row;    ///< what the comparison with it is called
    double bound;       ///< the part of its time that is to be kept
    void (*prepare)();  ///< called once before the first read
    bool (*read)(const char* path, CameraFacts& facts);
};

/// Those that this program was built with.
[[nodiscard]] const std::vector<PeerExif>& peersOfExif();

/// Opens the file, asks for its status, reads its first 4 KiB and closes it. False when one of these fails.
bool readHeadBarely(const char* path);

bool readByLibexif(const char* path, CameraFacts& facts);
void prepareExiv2();
bool readByExiv2(const char* path, CameraFacts& facts);

}  // namespace fi::bench
