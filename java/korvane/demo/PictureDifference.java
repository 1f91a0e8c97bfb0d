// SPDX-License-Identifier: Apache-2.0
package korvane.demo;

import java.awt.image.BufferedImage;
import java.io.File;
import java.io.IOException;
import java.util.Locale;
import javax.imageio.ImageIO;

/**
 * How far two pictures of one size are apart: the mean difference of a channel, out of 255. Ends with exit code 1 when
 * that is more than LIMIT or the sizes differ.
 *
 * <p>java -cp korvane_demo.jar korvane.demo.PictureDifference ONE.jpg OTHER.jpg LIMIT
 */
public final class PictureDifference {
    private PictureDifference() {}

    public static void main(String[] arguments) throws IOException {
        BufferedImage one = ImageIO.read(new File(arguments[0]));
        BufferedImage other = ImageIO.read(new File(arguments[1]));
        if (one.getWidth() != other.getWidth() || one.getHeight() != other.getHeight()) {
            System.err.println("the pictures differ in size");
            System.exit(1);
        }
        double mean = mean(one, other);
        System.out.println(String.format(Locale.ROOT, "%.2f", mean));
        System.exit(mean <= Double.parseDouble(arguments[2]) ? 0 : 1);
    }

    private static double mean(BufferedImage one, BufferedImage other) {
        long sum = 0;
        for (int y = 0; y < one.getHeight(); y++) {
            for (int x = 0; x < one.getWidth(); x++) {
                int a = one.getRGB(x, y);
                int b = other.getRGB(x, y);
                for (int shift = 0; shift < 24; shift += 8) {
                    sum += Math.abs((a >> shift & 255) - (b >> shift & 255));
                }
            }
        }
        return (double) sum / (3L * one.getWidth() * one.getHeight());
    }
}
