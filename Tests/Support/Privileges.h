// SPDX-License-Identifier: Apache-2.0
// Permission tests mean nothing to the superuser: for their length the process becomes an ordinary user.
#pragma once

namespace fi::test {

class OrdinaryUser {
public:
    OrdinaryUser();
    ~OrdinaryUser();
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    bool m_dropped = false;
};

}  // namespace fi::test
