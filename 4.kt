package guide
import android.graphics.SurfaceTexture
import android.view.Surface
import korvane.effects.FilterRenderer

fun makeRenderer(requestRender: () -> Unit, openCamera: (Surface) -> Unit): FilterRenderer {
    val renderer = FilterRenderer("ImageFilterXray") { texture ->
        texture.setOnFrameAvailableListener { requestRender() }
        openCamera(Surface(texture))
    }
    renderer.setFrameSize(1280, 720)
    return renderer
}
