// SPDX-License-Identifier: Apache-2.0
#include "Support/Privileges.h"

#include <unistd.h>

#include <cstdlib>

namespace fi::test {

namespace {
constexpr uid_t kNobody = 65534;
}

OrdinaryUser::OrdinaryUser() {
    if (geteuid() != 0) return;
    if (seteuid(kNobody) != 0) std::abort();
    m_dropped = true;
}

OrdinaryUser::~OrdinaryUser() {
    if (m_dropped && seteuid(0) != 0) std::abort();
}

}  // namespace fi::test
