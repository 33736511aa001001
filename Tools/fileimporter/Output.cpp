// SPDX-License-Identifier: Apache-2.0
#include "Output.h"

#include <errno.h>
#include <unistd.h>

#include <string>

namespace fi {

bool Output::line(std::string_view text) {
    std::string bytes(text);
    bytes += '\n';
    for (size_t done = 0; m_open && done < bytes.size();) {
        const ssize_t count = write(STDOUT_FILENO, bytes.data() + done, bytes.size() - done);
        if (count >= 0) {
            done += static_cast<size_t>(count);
        } else if (errno != EINTR) {
            m_open = false;
            if (errno != EPIPE) m_error = errno;
        }
    }
    return m_open;
}

bool Output::isTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

}  // namespace fi
