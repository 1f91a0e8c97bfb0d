// SPDX-License-Identifier: Apache-2.0
package korvane.effects;

import java.util.regex.Matcher;
import java.util.regex.Pattern;

/** What a filter's parameter is: its name, its type, the values that it takes, and the one that it starts from. */
public final class FilterParameter {
    /** How a parameter is set. */
    public enum Type {
        /** By {@link Filter#set(String, float)}: 1 for yes, 0 for no. */
        BOOLEAN,
        /** By {@link Filter#set(String, float[])}, whole numbers or 0 and 1 where the filter wants such. */
        ARRAY,
        /** By {@link Filter#set(String, float)}, a whole number. */
        INTEGER,
        /** By {@link Filter#set(String, float)}. */
        FLOAT,
        /** By {@link Filter#set(String, android.graphics.Bitmap)}. */
        BITMAP
    }

    // By the library's number of a type; what is not set through this package is null.
    private static final Type[] TYPES = {null, Type.BOOLEAN, Type.ARRAY, Type.INTEGER, Type.ARRAY, Type.FLOAT,
        Type.ARRAY, Type.FLOAT, Type.ARRAY, null, Type.BITMAP};

    private static final Pattern RANGE = Pattern.compile("(-?[0-9.]+) \\.\\.\\. (-?[0-9.]+)");
    private static final Pattern PIXELS = Pattern.compile("([0-9]+) x ([0-9]+) pixels");

    private final String name;
    private final Type type;
    private final int count;
    private final String range;
    private final Float defaultValue;
    private final String summary;
    private final float minimum;
    private final float maximum;
    private final int width;
    private final int height;

    private FilterParameter(String name, Type type, int count, String range, Float defaultValue, String summary) {
        this.name = name;
        this.type = type;
        this.count = count;
        this.range = range;
        this.defaultValue = defaultValue;
        this.summary = summary;
        Matcher numbers = RANGE.matcher(range);
        boolean bounded = numbers.matches();
        minimum = bounded ? Float.parseFloat(numbers.group(1)) : Float.NEGATIVE_INFINITY;
        maximum = bounded ? Float.parseFloat(numbers.group(2)) : Float.POSITIVE_INFINITY;
        Matcher pixels = PIXELS.matcher(range);
        boolean sized = pixels.matches();
        width = sized ? Integer.parseInt(pixels.group(1)) : 0;
        height = sized ? Integer.parseInt(pixels.group(2)) : 0;
    }

    /** From a line of {@link Natives#filterTable}; null for a type that this package does not set. */
    static FilterParameter fromTable(String[] fields) {
        Type type = TYPES[Integer.parseInt(fields[2])];
        if (type == null) {
            return null;
        }
        Float defaultValue = fields[5].isEmpty() ? null : Float.valueOf(fields[5]);
        return new FilterParameter(fields[1], type, Integer.parseInt(fields[3]), fields[4], defaultValue, fields[6]);
    }

    /**
     * The name by which it is set.
     *
     * @return such as "mStrength"
     */
    public String name() {
        return name;
    }

    /**
     * How it is set.
     *
     * @return the type
     */
    public Type type() {
        return type;
    }

    /**
     * How many values it has.
     *
     * @return more than 1 only for {@link Type#ARRAY}
     */
    public int count() {
        return count;
    }

    /**
     * The values that it takes, for people.
     *
     * @return such as "0 ... 1", "any" or "4096 x 64 pixels"
     */
    public String range() {
        return range;
    }

    /**
     * The smallest value that it takes.
     *
     * @return negative infinity where any will do
     */
    public float minimum() {
        return minimum;
    }

    /**
     * The largest value that it takes.
     *
     * @return infinity where any will do
     */
    public float maximum() {
        return maximum;
    }

    /**
     * The value that it starts from. Setting it changes nothing.
     *
     * @return null for arrays and bitmaps
     */
    public Float defaultValue() {
        return defaultValue;
    }

    /**
     * What it does, for people.
     *
     * @return one line
     */
    public String summary() {
        return summary;
    }

    @Override
    public String toString() {
        return name + " (" + range + "): " + summary;
    }

    void check(float[] values) {
        if (type == Type.BITMAP) {
            throw new IllegalArgumentException(name + " takes a bitmap");
        }
        if (Checks.notNull(values, name).length != count) {
            throw new IllegalArgumentException(name + " takes " + count + " values, not " + values.length);
        }
        for (float value : values) {
            Checks.inRange(Checks.finite(value, name), minimum, maximum, name);
            boolean isWhole = type != Type.INTEGER && type != Type.BOOLEAN || value == Math.rint(value);
            if (!isWhole || type == Type.BOOLEAN && value != 0 && value != 1) {
                throw new IllegalArgumentException(name + " is " + value + "; it must be "
                        + (type == Type.BOOLEAN ? "0 or 1" : "a whole number"));
            }
        }
    }

    void check(android.graphics.Bitmap bitmap) {
        if (type != Type.BITMAP) {
            throw new IllegalArgumentException(name + " takes " + range + ", not a bitmap");
        }
        Checks.readable(bitmap);
        if (width != 0 && (bitmap.getWidth() != width || bitmap.getHeight() != height)) {
            throw new IllegalArgumentException(name + " takes " + range + ", not " + bitmap.getWidth() + " x "
                    + bitmap.getHeight());
        }
    }
}
