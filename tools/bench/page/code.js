// SPDX-License-Identifier: Apache-2.0
// A chain of effects as code: a pipe of commands, C++ and Java. A step is {effect, values}, the effect a row of the table
// that the server sends.

const isDefault = (parameter, values) => values[parameter.name] === parameter.initial;

// For a shell: plain words stay as they are.
export function quote(word) {
    return /^[A-Za-z0-9_@%+=:,./-]+$/.test(word) ? word : `'${word.replaceAll("'", "'\\''")}'`;
}

function options({effect, values}) {
    const words = [];
    for (const parameter of effect.parameters) {
        const value = values[parameter.name];
        if (parameter.kind === "switch") {
            words.push(...(value ? [parameter.option] : []));
        } else if (parameter.kind === "text" || !isDefault(parameter, values)) {
            words.push(parameter.option, parameter.option === "--set" ? `${parameter.name}=${value}` : String(value));
        }
    }
    // A colour alone would bring its own strength with it.
    if (words.includes("--color") && !words.includes("--alpha")) {
        words.push("--alpha", String(values.alpha));
    }
    return words.map(quote);
}

// Between two commands the photo goes as PNG, which loses nothing.
export function asCommand(steps, input, output) {
    if (steps.length === 0) {
        return "# an unchanged photo";
    }
    return steps.map((step, index) => {
        const from = index === 0 ? quote(input) : "-";
        const to = index === steps.length - 1 ? ["-o", quote(output)] : ["-o", "-", "--format", "png"];
        const [name, ...rest] = step.effect.command.split(" ");
        const words = name === "filter" ? [name, rest[0], from] : [name, from, ...rest];
        return ["korvane", ...words, ...to, ...options(step)].join(" ");
    }).join(" |\n    ");
}

const float = (value) => `${Number.isInteger(value) ? `${value}.0` : value}F`;
const hex = (color) => [1, 3, 5].map((at) => `0x${color.slice(at, at + 2)}`);

const planes = "// for each channel, as a plane of its own\n";
const blurCalls = {
    stack: (radius) => `stack_blur(rgba, width, height, ${radius});`,
    fast: (radius) => `fast_blur(reinterpret_cast<unsigned int*>(rgba), rgba, width, height, ${radius});`,
    box: (radius) => `${planes}box_blur(plane, blurred, width, height, ${radius});`,
    gauss: (radius) => `${planes}gauss_blur(plane, blurred, width, height, ${radius});`,
    iir: (radius) => `gaussiir(rgba, width, height, 4, width * 4, ${float(radius)}, ${float(radius)});`,
};

const blurHeaders = {stack: "stack_blur", fast: "fast_blur", box: "gauss_blur", gauss: "gauss_blur", iir: "gauss_blur_iir"};

function cppOf({effect, values}) {
    const [kind, name] = effect.id.split("-");
    if (kind === "blur") {
        const lines = [blurCalls[name](values.radius)];
        const headers = [`algorithms/${blurHeaders[name]}.h`];
        if (values.alpha > 0) {
            headers.push("algorithms/alpha_blend.h");
            lines.push(`alpha_blend(rgba, width * height, ${hex(values.color).join(", ")}, ${values.alpha});`);
        }
        return {headers, lines};
    }
    if (kind === "filter") {
        return {headers: ["applications/filters/gpu_image_filter_factory.h"],
        lines: ["{", `    auto_ptr<ImageFilterBaseGL> filter(ImageFilterFactory::createFilter("ImageFilter${name}"));`,
            "    filter->initEngine();", "    filter->setupGraphics(1);", "    float upright[8] = {0, 0, 1, 0, 0, 1, 1, 1};",
            '    filter->setParameters("mTexVertices", upright);',
            ...effect.parameters.filter((parameter) => !isDefault(parameter, values)).flatMap((parameter) => [
                `    float ${parameter.name} = ${float(values[parameter.name])};`,
                `    filter->setParameters("${parameter.name}", &${parameter.name});`]),
            "    filter->process(rgba, width, height);", "    filter->release();", "}"]};
    }
    if (kind === "stamp") {
        return {headers: ["applications/photo_timestamp/timestamp_watermark.h"],
            lines: ["// on the photo as packed YUYV of even width",
                `make_photo_timestamp_watermark_to_yuyv(yuyv, width, height, ${JSON.stringify(values.text)}, 0);`]};
    }
    if (kind === "corners") {
        return {headers: ["algorithms/fast_detection.h"],
            lines: ["// on the photo as one byte a pixel", "std::vector<KeyPoint> corners;",
                `FastParams params = {${values.threshold}, ${values.keepAll ? 0 : 1}, ${values.distance}, 0, 3, 3};`,
                "fast16(gray, corners, width, height, &params);"]};
    }
    return {headers: ["applications/gif_maker/color_quantizer.h"],
        lines: [`// ColorQuantizer makes the palette of ${values.colors} colours; each pixel takes its nearest`]};
}

export function asCpp(steps) {
    const parts = steps.map(cppOf);
    const headers = [...new Set(parts.flatMap((part) => part.headers))].sort();
    return [...headers.map((name) => `#include "${name}"`), "",
        "// rgba: width * height pixels of four bytes", ...parts.flatMap((part) => part.lines)].join("\n");
}

function javaOf({effect, values}) {
    const [kind, name] = effect.id.split("-");
    if (kind === "blur" && name === "stack") {
        const argb = `0xFF${values.color.slice(1).toUpperCase()}`;
        return {imports: ["Blur"], lines: [values.alpha > 0
            ? `Blur.dim(bitmap, ${values.radius}, ${argb}, ${values.alpha / 256}f);`
            : `Blur.apply(bitmap, ${values.radius});`]};
    }
    if (kind === "filter") {
        const sets = effect.parameters.filter((parameter) => !isDefault(parameter, values))
            .map((parameter) => `.set("${parameter.name}", ${values[parameter.name]}f)`).join("");
        return {imports: ["Filter"], lines: [`try (Filter filter = Filter.open("ImageFilter${name}")) {`,
            `    filter${sets}.apply(bitmap);`, "}"]};
    }
    if (kind === "stamp") {
        return {imports: ["TimestampStamp"], lines: ["// on a frame of packed YUYV",
            `TimestampStamp.stamp(yuyv, width, height, ${JSON.stringify(values.text)});`]};
    }
    if (kind === "palette") {
        return {imports: ["Palette"], lines: [`int[] colors = Palette.of(bitmap, ${values.colors});`]};
    }
    return {imports: [], lines: [`// ${effect.title}: from C++ only`]};
}

export function asJava(steps) {
    const parts = steps.map(javaOf);
    const imports = [...new Set(parts.flatMap((part) => part.imports))].sort();
    return [...imports.map((name) => `import korvane.effects.${name};`), "",
        "// bitmap: mutable, ARGB_8888", ...parts.flatMap((part) => part.lines)].join("\n");
}
