# SPDX-License-Identifier: Apache-2.0
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(JPEG REQUIRED)
find_package(TIFF REQUIRED)
pkg_check_modules(ZIMG REQUIRED IMPORTED_TARGET zimg)
pkg_check_modules(UTF8PROC REQUIRED IMPORTED_TARGET libutf8proc)
pkg_check_modules(MOUNT REQUIRED IMPORTED_TARGET mount)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)
