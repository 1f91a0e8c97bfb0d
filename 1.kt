package guide
import android.graphics.Bitmap
import java.util.concurrent.Executors
import korvane.effects.Filter
import kotlinx.coroutines.asCoroutineDispatcher
import kotlinx.coroutines.withContext

class Effects {
    private val thread = Executors.newSingleThreadExecutor()
    private val dispatcher = thread.asCoroutineDispatcher()
    private val filters = HashMap<String, Filter>()

    suspend fun apply(name: String, photo: Bitmap): Bitmap = withContext(dispatcher) {
        val picture = photo.copy(Bitmap.Config.ARGB_8888, true)
        filters.getOrPut(name) { Filter.open(name) }.apply(picture)
        picture
    }

    fun close() {
        thread.execute { filters.values.forEach { it.close() } }
        thread.shutdown()
    }
}
