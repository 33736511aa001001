// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/ColorContext.h"

#include <cstdlib>

#include <lcms2.h>
#include <lcms2_plugin.h>

#include "PlatformKit/Base/Faults.h"

namespace fi {

namespace {

/// All that one profile may ask for, many times the largest one that is accepted.
constexpr size_t kMostBytes = size_t{192} << 20;
constexpr cmsUInt32Number kOldestLibrary = 2080;

/// Null while the context is being made and unmade.
ColorContext* ownerOf(cmsContext context) {
    return static_cast<ColorContext*>(cmsGetContextUserData(context));
}

void* resize(cmsContext context, void* block, cmsUInt32Number bytes) {
    ColorContext* const owner = ownerOf(context);
    if (owner != nullptr && !owner->take(bytes)) return nullptr;
    void* const resized =
        faultHappens(Fault::Allocation, "color engine") ? nullptr : std::realloc(block, bytes);
    if (resized == nullptr && owner != nullptr) owner->noteShortage();
    return resized;
}

void* allocate(cmsContext context, cmsUInt32Number bytes) {
    return resize(context, nullptr, bytes > 0 ? bytes : 1);
}

void* reallocate(cmsContext context, void* block, cmsUInt32Number bytes) {
    return resize(context, block, bytes > 0 ? bytes : 1);
}

void release(cmsContext, void* block) {
    std::free(block);
}

void hush(cmsContext, cmsUInt32Number, const char*) {}

cmsPluginMemHandler memoryPlugin() {
    cmsPluginMemHandler plugin{};
    plugin.base.Magic = cmsPluginMagicNumber;
    plugin.base.ExpectedVersion = kOldestLibrary;
    plugin.base.Type = cmsPluginMemHandlerSig;
    plugin.MallocPtr = &allocate;
    plugin.FreePtr = &release;
    plugin.ReallocPtr = &reallocate;
    return plugin;
}

}  // namespace

std::unique_ptr<ColorContext> ColorContext::create() {
    std::unique_ptr<ColorContext> context(new ColorContext);
    cmsPluginMemHandler plugin = memoryPlugin();
    const cmsContext handle = cmsCreateContext(&plugin, context.get());
    if (handle == nullptr) return nullptr;
    context->m_handle = handle;
    cmsSetLogErrorHandlerTHR(handle, &hush);
    return context;
}

ColorContext::~ColorContext() {
    if (m_handle != nullptr) cmsDeleteContext(static_cast<cmsContext>(m_handle));
}

bool ColorContext::take(size_t bytes) {
    return m_taken.fetch_add(bytes, std::memory_order_relaxed) + bytes <= kMostBytes;
}

}  // namespace fi
