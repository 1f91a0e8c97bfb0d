// SPDX-License-Identifier: Apache-2.0
import com.tervo.media.supercapture.mode.SuperCaptureMode;

/** Keeps the last advice and counts; throws when told to. */
public class RecordingMode extends SuperCaptureMode {
    public int reports;
    public float aperture;
    public int gain;
    public boolean throwFromCallback;

    @Override
    protected void onResultCallback(float aperture, int gain) {
        ++reports;
        this.aperture = aperture;
        this.gain = gain;
        if (throwFromCallback) {
            throw new IllegalStateException("scripted");
        }
    }
}
