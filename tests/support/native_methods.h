// SPDX-License-Identifier: Apache-2.0
// The native methods as functions of the program, by class and method.
#ifndef KORVANE_TESTS_SUPPORT_NATIVE_METHODS_H_
#define KORVANE_TESTS_SUPPORT_NATIVE_METHODS_H_

#include <com_tervo_media_effects_pano_PanoramaModule.h>
#include <com_tervo_media_effects_renderer_render_FiltersRender.h>
#include <com_tervo_media_render_BlurRender.h>
#include <com_tervo_media_supercapture_mode_SuperCaptureMode.h>
#include <korvane_effects_Natives.h>

#define BLUR(method) Java_com_tervo_media_render_BlurRender_##method
#define FILTERS(method) Java_com_tervo_media_effects_renderer_render_FiltersRender_##method
#define PANORAMA(method) Java_com_tervo_media_effects_pano_PanoramaModule_##method
#define EFFECTS(method) Java_korvane_effects_Natives_##method
#define MODE(method) Java_com_tervo_media_supercapture_mode_SuperCaptureMode_##method

#endif  // KORVANE_TESTS_SUPPORT_NATIVE_METHODS_H_
