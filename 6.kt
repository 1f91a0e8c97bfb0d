package guide
import korvane.effects.Burst
import korvane.effects.Panorama
import korvane.effects.TimestampStamp

fun sweep(width: Int, height: Int, moveGuide: (Int, Int) -> Unit): Panorama =
    Panorama(width, height, Panorama.Format.NV21) { result, x, y, _ ->
        if (result == Panorama.Result.TAKEN) {
            moveGuide(x, y)
        }
    }

fun merged(frames: List<ByteArray>, width: Int, height: Int, time: String): ByteArray {
    val burst = Burst(width, height)
    try {
        frames.forEach { burst.push(it) }
        val picture = burst.merge()
        TimestampStamp.stamp(picture, width, height, time)
        return picture
    } finally {
        burst.close()
    }
}
