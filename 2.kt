package guide
import korvane.effects.Filter

fun describe(name: String) {
    println(name + ": " + Filter.summary(name))
    for (parameter in Filter.parameters(name)) {
        println(parameter.name() + " from " + parameter.minimum() + " to " + parameter.maximum() +
            ", at first " + parameter.defaultValue() + ": " + parameter.summary())
    }
}
