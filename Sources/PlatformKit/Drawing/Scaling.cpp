// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/Scaling.h"

#include <zimg.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "PlatformKit/Drawing/ScalingSamples.h"
#include "PlatformKit/Drawing/Turns.h"

namespace fi {

namespace {

constexpr size_t kAlignment = 64;

/// The filter's byte arithmetic cuts overshoot between its two passes, which shows as wrong levels
/// beside hard edges; in floats the result is the exact one, rounded.
constexpr zimg_pixel_type_e kSampleType = ZIMG_PIXEL_FLOAT;

/// Not the variant for 64-byte registers: in 3.0.4 it drops taps for some pairs of sizes.
constexpr zimg_cpu_type_e kProcessor = ZIMG_CPU_AUTO;

struct FreeGraph {
    void operator()(zimg_filter_graph* graph) const { zimg_filter_graph_free(graph); }
};
struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};
using AlignedMemory = std::unique_ptr<void, FreeMemory>;

AlignedMemory allocateAligned(std::optional<uint64_t> bytes) {
    if (!bytes) return nullptr;
    const auto size = checkedRoundUp(std::max<uint64_t>(*bytes, 1), kAlignment);
    return AlignedMemory(size ? std::aligned_alloc(kAlignment, static_cast<size_t>(*size)) : nullptr);
}

/// What one filter graph is good for.
struct GraphKey {
    uint32_t fromWidth;
    uint32_t fromHeight;
    uint32_t toWidth;
    uint32_t toHeight;
    PixelLayout layout;
    bool operator==(const GraphKey&) const = default;
};

/// A built filter and the sizes of the memory that it works in.
struct Graph {
    GraphKey key;
    std::unique_ptr<zimg_filter_graph, FreeGraph> filter;
    size_t workBytes = 0;
    unsigned inputMask = 0;
    unsigned outputMask = 0;
};

zimg_image_format formatOf(uint32_t width, uint32_t height, PixelLayout layout) {
    zimg_image_format format;
    zimg_image_format_default(&format, ZIMG_API_VERSION);
    const bool gray = planesOf(layout) == 1;
    format.width = width;
    format.height = height;
    format.pixel_type = kSampleType;
    format.color_family = gray ? ZIMG_COLOR_GREY : ZIMG_COLOR_RGB;
    format.matrix_coefficients = gray ? ZIMG_MATRIX_UNSPECIFIED : ZIMG_MATRIX_RGB;
    // The fourth plane is filtered like the others, and they are not divided by it.
    format.alpha = planesOf(layout) == 4 ? ZIMG_ALPHA_PREMULTIPLIED : ZIMG_ALPHA_NONE;
    return format;
}

std::unique_ptr<zimg_filter_graph, FreeGraph> buildFilter(const GraphKey& key) {
    const zimg_image_format from = formatOf(key.fromWidth, key.fromHeight, key.layout);
    const zimg_image_format to = formatOf(key.toWidth, key.toHeight, key.layout);
    zimg_graph_builder_params params;
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    params.resample_filter = ZIMG_RESIZE_LANCZOS;
    params.filter_param_a = 3;
    params.cpu_type = kProcessor;
    return std::unique_ptr<zimg_filter_graph, FreeGraph>(zimg_filter_graph_build(&from, &to, &params));
}

std::unique_ptr<Graph> buildGraph(const GraphKey& key) {
    auto graph = std::make_unique<Graph>();
    graph->key = key;
    graph->filter = buildFilter(key);
    unsigned inputRows = 0;
    unsigned outputRows = 0;
    if (!graph->filter ||
        zimg_filter_graph_get_tmp_size(graph->filter.get(), &graph->workBytes) != ZIMG_ERROR_SUCCESS ||
        zimg_filter_graph_get_input_buffering(graph->filter.get(), &inputRows) != ZIMG_ERROR_SUCCESS ||
        zimg_filter_graph_get_output_buffering(graph->filter.get(), &outputRows) != ZIMG_ERROR_SUCCESS) {
        return nullptr;
    }
    graph->inputMask = zimg_select_buffer_mask(inputRows);
    graph->outputMask = zimg_select_buffer_mask(outputRows);
    return graph;
}

/// The filters that this thread used last. Photos of one card mostly come in very few sizes.
class GraphCache {
public:
    const Graph* graphFor(const GraphKey& key) {
        const auto found = std::find_if(m_graphs.begin(), m_graphs.end(),
                                        [&](const auto& graph) { return graph->key == key; });
        if (found != m_graphs.end()) {
            std::rotate(m_graphs.begin(), found, found + 1);
            return m_graphs.front().get();
        }
        auto built = buildGraph(key);
        if (!built) return nullptr;
        if (m_graphs.size() >= kMost) m_graphs.pop_back();
        m_graphs.insert(m_graphs.begin(), std::move(built));
        return m_graphs.front().get();
    }

private:
    static constexpr size_t kMost = 8;
    std::vector<std::unique_ptr<Graph>> m_graphs;  ///< the last used first
};

/// Rows of each component as floats, in a ring as long as the filter's window.
class Planes {
public:
    static std::optional<Planes> create(uint32_t width, uint32_t height, uint32_t count, unsigned mask) {
        const uint64_t rows = mask == ZIMG_BUFFER_MAX ? uint64_t{height} : uint64_t{mask} + 1;
        const auto rowBytes = checkedRoundUp(uint64_t{width} * sizeof(float), kAlignment);
        const auto planeBytes = rowBytes ? checkedMultiply<uint64_t>(*rowBytes, rows) : std::nullopt;
        auto memory =
            allocateAligned(planeBytes ? checkedMultiply<uint64_t>(*planeBytes, count) : std::nullopt);
        if (!memory) return std::nullopt;
        Planes planes;
        planes.m_memory = std::move(memory);
        planes.m_rowFloats = static_cast<size_t>(*rowBytes / sizeof(float));
        planes.m_planeFloats = static_cast<size_t>(*planeBytes / sizeof(float));
        planes.m_count = count;
        planes.m_mask = mask;
        return planes;
    }

    [[nodiscard]] PlaneRows rows(unsigned index) const {
        PlaneRows rows = {};
        for (uint32_t plane = 0; plane < m_count; ++plane)
            rows[plane] = start(plane) + m_rowFloats * (index & m_mask);
        return rows;
    }

    /// The library's own description of this memory, for reading or for writing.
    template <typename Buffer>
    [[nodiscard]] Buffer describe() const {
        Buffer buffer = {};
        buffer.version = ZIMG_API_VERSION;
        for (uint32_t plane = 0; plane < m_count; ++plane) {
            buffer.plane[plane].data = start(plane);
            buffer.plane[plane].stride = static_cast<ptrdiff_t>(m_rowFloats * sizeof(float));
            buffer.plane[plane].mask = m_mask;
        }
        return buffer;
    }

private:
    Planes() = default;
    [[nodiscard]] float* start(uint32_t plane) const {
        return static_cast<float*>(m_memory.get()) + m_planeFloats * plane;
    }

    AlignedMemory m_memory;
    size_t m_rowFloats = 0;
    size_t m_planeFloats = 0;
    uint32_t m_count = 0;
    unsigned m_mask = 0;
};

/// What the callbacks need: the ring they fill or empty, and the picture on its other side.
struct Unpacking {
    const PixelBuffer* picture;
    const Planes* planes;
};
struct Packing {
    PixelBuffer* picture;
    const Planes* planes;
};

// The filter asks for columns rounded up to its registers' width; those beyond the picture mean nothing.
int unpackRow(void* user, unsigned index, unsigned left, unsigned right) {
    const auto& job = *static_cast<const Unpacking*>(user);
    const Columns columns{left, std::min(right, job.picture->width())};
    spreadRow(*job.picture, index, columns, job.planes->rows(index));
    return 0;
}

int packRow(void* user, unsigned index, unsigned left, unsigned right) {
    const auto& job = *static_cast<const Packing*>(user);
    const Columns columns{left, std::min(right, job.picture->width())};
    gatherRow(job.planes->rows(index), columns, *job.picture, index);
    return 0;
}

bool run(const Graph& graph, const PixelBuffer& source, PixelBuffer& target) {
    const uint32_t count = planesOf(source.layout());
    const auto input = Planes::create(source.width(), source.height(), count, graph.inputMask);
    const auto output = Planes::create(target.width(), target.height(), count, graph.outputMask);
    const AlignedMemory work = allocateAligned(graph.workBytes);
    if (!input || !output || !work) return false;
    const auto from = input->describe<zimg_image_buffer_const>();
    const auto to = output->describe<zimg_image_buffer>();
    Unpacking unpacking{&source, &*input};
    Packing packing{&target, &*output};
    return zimg_filter_graph_process(graph.filter.get(), &from, &to, work.get(), unpackRow, &unpacking,
                                     packRow, &packing) == ZIMG_ERROR_SUCCESS;
}

bool scaleInto(const PixelBuffer& source, PixelBuffer& target) {
    static thread_local GraphCache cache;
    const GraphKey key{source.width(), source.height(), target.width(), target.height(), source.layout()};
    try {
        const Graph* graph = cache.graphFor(key);
        return graph != nullptr && run(*graph, source, target);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

std::optional<PixelBuffer> scaled(const PixelBuffer& picture, uint32_t width, uint32_t height) {
    if (width == 0 || height == 0 || picture.width() == 0 || picture.height() == 0) return std::nullopt;
    if (width == picture.width() && height == picture.height()) return turned(picture, Turn::None);
    if (planesOf(picture.layout()) == 0) return std::nullopt;
    auto target = PixelBuffer::create(width, height, picture.layout());
    if (!target || !scaleInto(picture, *target)) return std::nullopt;
    return target;
}

}  // namespace fi
