package guide
import android.app.Activity
import android.os.Bundle
import korvane.effects.ProgramCache

class MainActivity : Activity() {
    override fun onCreate(savedInstanceState: Bundle?) {
        super.onCreate(savedInstanceState)
        ProgramCache.setDirectory(codeCacheDir)
    }
}
