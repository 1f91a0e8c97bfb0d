// SPDX-License-Identifier: Apache-2.0
package korvane.demo;

import android.graphics.Bitmap;
import com.tervo.media.render.BlurRender;
import java.awt.image.BufferedImage;
import java.io.File;
import java.io.IOException;
import java.nio.ByteBuffer;
import javax.imageio.IIOImage;
import javax.imageio.ImageIO;
import javax.imageio.ImageWriteParam;
import javax.imageio.ImageWriter;
import javax.imageio.stream.ImageOutputStream;

/**
 * What an application does with BlurRender, on the desktop: photo to bitmap, blur and dim, bitmap to photo.
 *
 * <p>java -cp korvane.jar:korvane_demo.jar -Djava.library.path=FOLDER_OF_LIBKORVANE korvane.demo.BlurDemo IN.jpg OUT.jpg
 * RADIUS '#RRGGBB' ALPHA
 */
public final class BlurDemo {
    private static final float QUALITY = 0.92f;

    private BlurDemo() {}

    public static void main(String[] arguments) throws IOException {
        if (arguments.length != 5) {
            System.err.println("usage: BlurDemo IN.jpg OUT.jpg RADIUS '#RRGGBB' ALPHA");
            System.exit(2);
        }
        Bitmap bitmap = read(new File(arguments[0]));
        int radius = Integer.parseInt(arguments[2]);
        int color = Integer.decode(arguments[3]);
        int alpha = Integer.parseInt(arguments[4]);
        new BlurRender().nativeProcess(bitmap, bitmap.getWidth(), bitmap.getHeight(), radius, color, alpha);
        write(bitmap, new File(arguments[1]));
    }

    private static Bitmap read(File file) throws IOException {
        BufferedImage photo = ImageIO.read(file);
        if (photo == null) {
            throw new IOException(file + " is not a picture that this Java can read");
        }
        Bitmap bitmap = Bitmap.createBitmap(photo.getWidth(), photo.getHeight());
        ByteBuffer pixels = ByteBuffer.allocate(bitmap.getRowBytes() * bitmap.getHeight());
        int[] row = new int[photo.getWidth()];
        for (int y = 0; y < photo.getHeight(); y++) {
            photo.getRGB(0, y, row.length, 1, row, 0, row.length);
            for (int argb : row) {
                // A Java colour is 0xAARRGGBB, a bitmap's pixel the bytes R, G, B, A.
                pixels.putInt(argb << 8 | argb >>> 24);
            }
        }
        pixels.flip();
        bitmap.copyPixelsFromBuffer(pixels);
        return bitmap;
    }

    private static void write(Bitmap bitmap, File file) throws IOException {
        ByteBuffer pixels = ByteBuffer.allocate(bitmap.getRowBytes() * bitmap.getHeight());
        bitmap.copyPixelsToBuffer(pixels);
        pixels.flip();
        BufferedImage photo = new BufferedImage(bitmap.getWidth(), bitmap.getHeight(), BufferedImage.TYPE_INT_RGB);
        for (int y = 0; y < photo.getHeight(); y++) {
            for (int x = 0; x < photo.getWidth(); x++) {
                photo.setRGB(x, y, pixels.getInt() >>> 8);
            }
        }
        file.delete();
        ImageWriter writer = ImageIO.getImageWritersByFormatName("jpeg").next();
        ImageWriteParam settings = writer.getDefaultWriteParam();
        settings.setCompressionMode(ImageWriteParam.MODE_EXPLICIT);
        settings.setCompressionQuality(QUALITY);
        try (ImageOutputStream out = ImageIO.createImageOutputStream(file)) {
            writer.setOutput(out);
            writer.write(null, new IIOImage(photo, null, null), settings);
        }
        writer.dispose();
    }
}
