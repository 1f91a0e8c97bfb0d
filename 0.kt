package guide
import android.graphics.Bitmap
import korvane.effects.Blur
import korvane.effects.Filter

fun frosted(photo: Bitmap): Bitmap {
    val background = photo.copy(Bitmap.Config.ARGB_8888, true)
    Blur.dim(background, 25, 0xFF102040.toInt(), 0.44f)
    return background
}

fun twisted(photo: Bitmap): Bitmap {
    val picture = photo.copy(Bitmap.Config.ARGB_8888, true)
    Filter.open("ImageFilterDistorted").use { filter ->
        filter.set("mStrength", 3f)
        filter.apply(picture)
    }
    return picture
}
