package guide
import androidx.camera.core.ImageProxy
import korvane.effects.CameraFrames
import korvane.effects.Panorama

fun feed(image: ImageProxy, panorama: Panorama, gyroX: Float, gyroY: Float): Panorama.Result {
    val (y, u, v) = image.planes
    val frame = CameraFrames.nv21(
        y.buffer, y.rowStride, u.buffer, v.buffer, u.rowStride, u.pixelStride, image.width, image.height)
    return panorama.feed(frame, gyroX, gyroY)
}
