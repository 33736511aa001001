// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Drawing/MakeProfiles.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <memory>

#include <lcms2.h>

namespace fi::test {

namespace {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

ProfileBytes bytesOf(const Profile& profile) {
    cmsUInt32Number size = 0;
    if (!profile || cmsSaveProfileToMem(profile.get(), nullptr, &size) == 0) std::abort();
    ProfileBytes bytes(size);
    if (cmsSaveProfileToMem(profile.get(), bytes.data(), &size) == 0) std::abort();
    return bytes;
}

Profile wideProfile() {
    const cmsCIExyY white = {0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1.0}, {0.21, 0.71, 1.0}, {0.15, 0.06, 1.0}};
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, 563.0 / 256.0);
    cmsToneCurve* const curves[3] = {curve, curve, curve};
    Profile profile(cmsCreateRGBProfile(&white, &primaries, curves));
    cmsFreeToneCurve(curve);
    return profile;
}

/// Lab of D50 for values from 0 to 1.
using ToLab = std::function<cmsCIELab(const double* values)>;

struct Sampling {
    const ToLab& toLab;
    cmsUInt32Number inputs;
};

cmsInt32Number sampleGrid(const cmsUInt16Number* in, cmsUInt16Number* out, void* cargo) {
    const auto& sampling = *static_cast<const Sampling*>(cargo);
    double values[4] = {};
    for (cmsUInt32Number i = 0; i < sampling.inputs; ++i)
        values[i] = in[i] / 65535.0;
    const cmsCIELab lab = sampling.toLab(values);
    cmsFloat2LabEncodedV2(out, &lab);
    return 1;
}

/// A profile of version 2 with one grid, to Lab.
ProfileBytes gridProfile(cmsColorSpaceSignature space, cmsUInt32Number inputs, cmsUInt32Number points,
                         const ToLab& toLab, cmsTagSignature tag = cmsSigAToB0Tag) {
    const Profile profile(cmsCreateProfilePlaceholder(nullptr));
    cmsSetProfileVersion(profile.get(), 2.1);
    cmsSetDeviceClass(profile.get(), cmsSigOutputClass);
    cmsSetColorSpace(profile.get(), space);
    cmsSetPCS(profile.get(), cmsSigLabData);
    cmsWriteTag(profile.get(), cmsSigMediaWhitePointTag, cmsD50_XYZ());
    cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, inputs, 3);
    cmsStage* const grid = cmsStageAllocCLut16bit(nullptr, points, inputs, 3, nullptr);
    Sampling sampling{toLab, inputs};
    if (cmsStageSampleCLut16bit(grid, &sampleGrid, &sampling, 0) == 0) std::abort();
    cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, grid);
    if (cmsWriteTag(profile.get(), tag, pipeline) == 0) std::abort();
    ProfileBytes bytes = bytesOf(profile);
    cmsPipelineFree(pipeline);
    return bytes;
}

}  // namespace

ProfileBytes makeSRGBProfile() {
    return bytesOf(Profile(cmsCreate_sRGBProfile()));
}

ProfileBytes makeWideProfile() {
    return bytesOf(wideProfile());
}

ProfileBytes makeGrayProfile(double gamma) {
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
    ProfileBytes bytes = bytesOf(Profile(cmsCreateGrayProfile(cmsD50_xyY(), curve)));
    cmsFreeToneCurve(curve);
    return bytes;
}

ProfileBytes makeInkProfile() {
    return gridProfile(cmsSigCmykData, 4, 9, [](const double* inks) {
        const double paper[3] = {1 - 0.9 * inks[0], 1 - 0.8 * inks[1], 1 - 0.9 * inks[2]};
        const double black = 1 - 0.85 * inks[3];
        const double lightness = 100 * black * std::cbrt(paper[0] * paper[1] * paper[2]);
        return cmsCIELab{lightness, 60 * black * (paper[0] - paper[1]),
                         60 * black * (paper[0] + paper[1] - 2 * paper[2]) / 2};
    });
}

ProfileBytes makeGridProfile() {
    const Profile wide = wideProfile();
    const Profile lab(cmsCreateLab4Profile(nullptr));
    void* const exact = cmsCreateTransform(wide.get(), TYPE_RGB_DBL, lab.get(), TYPE_Lab_DBL,
                                           INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE);
    ProfileBytes bytes = gridProfile(cmsSigRgbData, 3, 17, [&](const double* values) {
        cmsCIELab color;
        cmsDoTransform(exact, values, &color, 1);
        return color;
    });
    cmsDeleteTransform(exact);
    return bytes;
}

ProfileBytes makeFloatingProfile() {
    const Profile profile(cmsCreateProfilePlaceholder(nullptr));
    cmsSetProfileVersion(profile.get(), 4.3);
    cmsSetDeviceClass(profile.get(), cmsSigInputClass);
    cmsSetColorSpace(profile.get(), cmsSigRgbData);
    cmsSetPCS(profile.get(), cmsSigXYZData);
    cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 3, 3);
    const double half[9] = {0.5, 0, 0, 0, 0.5, 0, 0, 0, 0.5};
    cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, cmsStageAllocMatrix(nullptr, 3, 3, half, nullptr));
    if (cmsWriteTag(profile.get(), cmsSigDToB0Tag, pipeline) == 0) std::abort();
    ProfileBytes bytes = bytesOf(profile);
    cmsPipelineFree(pipeline);
    return bytes;
}

}  // namespace fi::test
