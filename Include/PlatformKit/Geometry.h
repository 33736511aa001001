// SPDX-License-Identifier: Apache-2.0
// Points, sizes and rectangles in floating point.
#pragma once

namespace fi {

using CGFloat = double;

struct NSPoint {
    CGFloat x = 0;
    CGFloat y = 0;
    friend bool operator==(const NSPoint&, const NSPoint&) = default;
};

struct NSSize {
    CGFloat width = 0;
    CGFloat height = 0;
    friend bool operator==(const NSSize&, const NSSize&) = default;
};

struct NSRect {
    NSPoint origin;
    NSSize size;
    friend bool operator==(const NSRect&, const NSRect&) = default;
};

using CGPoint = NSPoint;
using CGSize = NSSize;
using CGRect = NSRect;

}  // namespace fi
