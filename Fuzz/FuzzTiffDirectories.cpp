// SPDX-License-Identifier: Apache-2.0
// Any bytes: directories hold no more than the source has, and every accessor answers.
#include "Contract.h"
#include "PlatformKit/Codecs/TiffDirectories.h"

using namespace fi;
using fi::fuzz::require;

namespace {

size_t visit(const std::vector<TiffField>& directory) {
    size_t bytes = 0;
    for (const TiffField& field : directory) {
        bytes += field.data.size();
        require(!field.data.empty(), "a field has data");
        require(field.asText().size() <= field.data.size(), "a text lies in the data");
        for (const size_t index : {size_t{0}, size_t{1}, size_t{field.count}, SIZE_MAX}) {
            const auto plain = field.asUnsigned(index);
            const auto withSign = field.asSigned(index);
            (void)field.asRational(index);
            require(index < field.count || (!plain && !withSign), "nothing behind the last value");
            if (plain && withSign)
                require(static_cast<int64_t>(*plain) == *withSign, "both readings agree");
        }
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    MemorySource source(std::span<const uint8_t>(data, size));
    for (const uint64_t base : {uint64_t{0}, uint64_t{6}, uint64_t{size}, UINT64_MAX}) {
        const auto set = readTiffDirectories(source, base);
        if (!set) continue;
        const size_t bytes =
            visit(set->ifd0) + visit(set->exif) + visit(set->gps) + visit(set->interop) + visit(set->ifd1);
        require(bytes <= size + 65536, "values hold no more than the source and a constant");
        const auto turn = orientation(*set);
        require(!turn || (*turn >= 1 && *turn <= 8), "an orientation is one of eight");
        const auto dots = density(*set);
        require(!dots || (dots->x > 0 && dots->y > 0), "a density is positive");
    }
    return 0;
}
