// SPDX-License-Identifier: Apache-2.0
package korvane.sample

import android.app.Activity
import android.content.Intent
import android.graphics.Bitmap
import android.graphics.BitmapFactory
import android.graphics.ImageDecoder
import android.net.Uri
import android.os.Build
import android.os.Bundle
import android.view.MotionEvent
import android.widget.Button
import android.widget.ImageView
import android.widget.RadioButton
import android.widget.RadioGroup
import android.widget.SeekBar
import android.widget.TextView
import java.util.concurrent.Executors
import korvane.effects.Blur
import korvane.effects.Filter
import korvane.effects.ProgramCache

/** An effect as the screen offers it: applied in place, with the slider's place from 0 to 1. */
private class Effect(val label: String, val apply: (Bitmap, Float) -> Unit)

/** Pick a photo, choose an effect, move the slider; hold a finger on the picture to see the photo as it was. */
class MainActivity : Activity() {
    // Filters belong to the thread that opened them, and a photo is too much work for the main thread.
    private val worker = Executors.newSingleThreadExecutor()
    private val filters = HashMap<String, Filter>()

    private val effects = listOf(
        Effect("Blur") { bitmap, amount -> Blur.apply(bitmap, (amount * 100).toInt()) },
        Effect("Dim") { bitmap, amount -> Blur.dim(bitmap, 25, 0xFF102040.toInt(), amount) }
    ) + Filter.names().map { name -> Effect(name.removePrefix("ImageFilter")) { bitmap, amount -> filter(name, bitmap, amount) } }

    private lateinit var picture: ImageView
    private lateinit var message: TextView
    private lateinit var amount: SeekBar
    private var effect = effects[0]
    private var photo: Bitmap? = null
    private var edited: Bitmap? = null

    // The newest request; older ones that still wait are skipped.
    @Volatile
    private var request = 0

    override fun onCreate(savedInstanceState: Bundle?) {
        super.onCreate(savedInstanceState)
        setContentView(R.layout.main)
        ProgramCache.setDirectory(codeCacheDir)
        picture = findViewById(R.id.picture)
        message = findViewById(R.id.message)
        amount = findViewById(R.id.amount)
        amount.progress = 30
        amount.setOnSeekBarChangeListener(object : SeekBar.OnSeekBarChangeListener {
            override fun onProgressChanged(bar: SeekBar, progress: Int, fromUser: Boolean) = update()
            override fun onStartTrackingTouch(bar: SeekBar) {}
            override fun onStopTrackingTouch(bar: SeekBar) {}
        })
        picture.setOnTouchListener { _, event ->
            when (event.action) {
                MotionEvent.ACTION_DOWN -> picture.setImageBitmap(photo)
                MotionEvent.ACTION_UP, MotionEvent.ACTION_CANCEL -> picture.setImageBitmap(edited)
            }
            true
        }
        addChips(findViewById(R.id.effects))
        findViewById<Button>(R.id.pick).setOnClickListener {
            val intent = Intent(Intent.ACTION_OPEN_DOCUMENT).setType("image/*").addCategory(Intent.CATEGORY_OPENABLE)
            startActivityForResult(intent, PICK)
        }
    }

    private fun addChips(row: RadioGroup) {
        effects.forEachIndexed { index, one ->
            val chip = RadioButton(this)
            chip.id = index + 1
            chip.text = one.label
            row.addView(chip)
        }
        row.check(1)
        row.setOnCheckedChangeListener { _, id ->
            effect = effects[id - 1]
            update()
        }
    }

    override fun onActivityResult(requestCode: Int, resultCode: Int, data: Intent?) {
        val uri = data?.data
        if (requestCode == PICK && resultCode == RESULT_OK && uri != null) {
            worker.execute {
                val loaded = runCatching { load(uri) }
                runOnUiThread {
                    photo = loaded.getOrNull()
                    message.text = loaded.exceptionOrNull()?.message
                    update()
                }
            }
        }
    }

    // At most 2048 pixels a side: enough for a screen. ImageDecoder turns the photo upright, which BitmapFactory does not.
    private fun load(uri: Uri): Bitmap {
        if (Build.VERSION.SDK_INT >= 28) {
            return ImageDecoder.decodeBitmap(ImageDecoder.createSource(contentResolver, uri)) { decoder, info, _ ->
                val longer = maxOf(info.size.width, info.size.height)
                decoder.setTargetSampleSize(maxOf(1, (longer + 2047) / 2048))
                decoder.allocator = ImageDecoder.ALLOCATOR_SOFTWARE
            }
        }
        val options = BitmapFactory.Options()
        options.inSampleSize = 2
        return contentResolver.openInputStream(uri).use { BitmapFactory.decodeStream(it, null, options) }
            ?: throw IllegalArgumentException("not a picture")
    }

    /** Applies the chosen effect to a copy of the photo, in the background. */
    private fun update() {
        val source = photo ?: return
        val chosen = effect
        val place = amount.progress / 100f
        val mine = ++request
        worker.execute {
            if (mine == request) {
                val result = source.copy(Bitmap.Config.ARGB_8888, true)
                val failure = runCatching { chosen.apply(result, place) }.exceptionOrNull()
                runOnUiThread {
                    edited = result
                    picture.setImageBitmap(result)
                    message.text = failure?.message
                }
            }
        }
    }

    /** The slider moves the filter's first parameter that has a range. */
    private fun filter(name: String, bitmap: Bitmap, amount: Float) {
        val filter = filters.getOrPut(name) { Filter.open(name) }
        val parameter = filter.parameters().firstOrNull { it.defaultValue() != null && it.maximum() < 100f }
        if (parameter != null) {
            filter.set(parameter.name(), parameter.minimum() + amount * (parameter.maximum() - parameter.minimum()))
        }
        filter.apply(bitmap)
    }

    override fun onDestroy() {
        worker.execute { filters.values.forEach { it.close() } }
        worker.shutdown()
        super.onDestroy()
    }

    private companion object {
        const val PICK = 1
    }
}
