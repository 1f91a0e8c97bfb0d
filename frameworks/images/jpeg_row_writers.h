// Row writers: one row of an image's pixels to the 3 bytes a pixel that libjpeg is given.
#ifndef KORVANE_FRAMEWORKS_IMAGES_JPEG_ROW_WRITERS_H_
#define KORVANE_FRAMEWORKS_IMAGES_JPEG_ROW_WRITERS_H_

// The grey byte three times.
void Write_Gray(const unsigned char* src, unsigned char* dst, int width);

void Write_RGB(const unsigned char* src, unsigned char* dst, int width);

// R, G, B; the alpha byte is left out.
void Write_RGBA(const unsigned char* src, unsigned char* dst, int width);

// Y, U, V as they lie.
void Write_YUV(const unsigned char* src, unsigned char* dst, int width);

#endif  // KORVANE_FRAMEWORKS_IMAGES_JPEG_ROW_WRITERS_H_
