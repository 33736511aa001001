// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Files/MountTable.h"

#include <libmount/libmount.h>

#include <atomic>
#include <memory>

namespace fi {

namespace {

constexpr const char* kSystemTable = "/proc/self/mountinfo";

constinit std::atomic<const char*> s_file{kSystemTable};

}  // namespace

void setMountTableFile(const char* file) {
    s_file = file != nullptr ? file : kSystemTable;
}

MountTable MountTable::read() {
    return readFrom(s_file);
}

MountTable MountTable::readFrom(const char* file) {
    MountTable result;
    const std::unique_ptr<libmnt_table, void (*)(libmnt_table*)> table(mnt_new_table(), &mnt_unref_table);
    const std::unique_ptr<libmnt_iter, void (*)(libmnt_iter*)> iterator(mnt_new_iter(MNT_ITER_FORWARD),
                                                                        &mnt_free_iter);
    if (!table || !iterator || mnt_table_parse_file(table.get(), file) != 0) return result;
    libmnt_fs* system = nullptr;
    while (mnt_table_next_fs(table.get(), iterator.get(), &system) == 0) {
        if (const char* target = mnt_fs_get_target(system)) result.m_points.insert(target);
    }
    return result;
}

}  // namespace fi
