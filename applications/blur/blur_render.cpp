// Entry of com.tervo.media.render.BlurRender: the frosted background behind dialogs, drawn in place on a bitmap.
#include <jni.h>

#include <cstdint>

#include "algorithms/alpha_blend.h"
#include "algorithms/stack_blur.h"
#include "platform/bitmap.h"

namespace {

class LockedBitmap {
  public:
    // Only the pointer tells whether there are pixels; Java gets its lock back in either case.
    LockedBitmap(JNIEnv* env, jobject bitmap) : m_Env(env), m_Bitmap(bitmap) {
        AndroidBitmap_lockPixels(env, bitmap, &m_Pixels);
    }
    ~LockedBitmap() { AndroidBitmap_unlockPixels(m_Env, m_Bitmap); }
    LockedBitmap(const LockedBitmap&) = delete;
    LockedBitmap& operator=(const LockedBitmap&) = delete;

    unsigned char* pixels() const { return static_cast<unsigned char*>(m_Pixels); }

  private:
    JNIEnv* m_Env;
    jobject m_Bitmap;
    void* m_Pixels = nullptr;
};

// `color` is 0xAARRGGBB, while pixels begin with their red byte. Two negative sizes have a positive product, hence the
// test of each.
void blur_and_dim(unsigned char* pixels, int width, int height, int radius, int color, int weight) {
    if (pixels == nullptr || width < 1 || height < 1) {
        return;
    }
    stack_blur(pixels, width, height, radius);
    const auto count = static_cast<int>(static_cast<uint32_t>(width) * static_cast<uint32_t>(height));
    alpha_blend_neon(pixels, count, (color >> 16) & 255, (color >> 8) & 255, color & 255, weight);
}

}  // namespace

// The size is taken on trust: the bitmap must have at least width * height pixels of 4 bytes, rows packed.
extern "C" JNIEXPORT void JNICALL Java_com_tervo_media_render_BlurRender_nativeProcess(JNIEnv* env, jobject /*object*/,
                                                                                       jobject bitmap, jint width,
                                                                                       jint height, jint radius,
                                                                                       jint blendColor,
                                                                                       jint blendAlpha) {
    const LockedBitmap locked(env, bitmap);
    blur_and_dim(locked.pixels(), width, height, radius, blendColor, blendAlpha);
}
