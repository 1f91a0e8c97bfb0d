// SPDX-License-Identifier: Apache-2.0
import com.tervo.media.effects.pano.PanoramaModule;
import com.tervo.media.supercapture.mode.SuperCaptureMode;
import java.util.Arrays;
import korvane.effects.ExposureAdvisor;

/** An app that a shrinker works on: says what native code has reported to its classes. */
public final class ShrunkApp {
    private static final class Mode extends SuperCaptureMode {
        private String advice = "none";

        @Override
        protected void onResultCallback(float aperture, int gain) {
            advice = aperture + " " + gain;
        }
    }

    private ShrunkApp() {}

    public static void main(String[] arguments) {
        byte[] frame = new byte[8 * 8 * 3 / 2];
        Arrays.fill(frame, (byte) 200);
        Mode mode = new Mode();
        mode.nativeProcess(mode.nativeCreate(8, 8, 0), frame);
        System.out.println("advice: " + mode.advice);

        PanoramaModule panorama = new PanoramaModule();
        long handle = panorama.nativeCreate(8, 8, 2);
        panorama.nativeProcess(handle, frame, 10, 10);
        panorama.nativeProcess(handle, frame, 7, 8);
        System.out.println("offsets: " + panorama.mOffsetX + " " + panorama.mOffsetY);

        ExposureAdvisor advisor = new ExposureAdvisor(8, 8,
                (aperture, gain) -> System.out.println("advisor: " + aperture + " " + gain));
        advisor.feed(frame);
        // The sweep's worker has no end of its own.
        System.exit(0);
    }
}
