// SPDX-License-Identifier: Apache-2.0
// A chain of effects as code: a pipe of commands, C++ and Java. A step is {effect, values}, the effect a row of the table
// that the server sends.

// For a shell: plain words stay as they are.
export function quote(word) {
    return /^[A-Za-z0-9_@%+=:,./-]+$/.test(word) ? word : `'${word.replaceAll("'", "'\\''")}'`;
}

const changedOf = ({effect, values}) => effect.parameters.filter(({name, initial}) => values[name] !== initial);

function options(step) {
    const {effect, values} = step;
    const changed = changedOf(step);
    const words = [];
    for (const parameter of effect.parameters) {
        const {name, kind, option} = parameter;
        const value = values[name];
        if (kind === "switch") {
            words.push(...(value ? [option] : []));
        } else if (kind === "text" || changed.includes(parameter)) {
            words.push(option, option === "--set" ? `${name}=${value}` : String(value));
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

// How a value stands in code.
const kinds = {
    float: (value) => `${value}${Number.isInteger(value) ? ".0" : ""}f`,
    bytes: (color) => [1, 3, 5].map((at) => `0x${color.slice(at, at + 2)}`).join(", "),
    argb: (color) => `0xFF${color.slice(1).toUpperCase()}`,
    share: (weight) => `${weight / 256}f`,
    quoted: (text) => JSON.stringify(text),
    not: (isOn) => isOn ? 0 : 1,
};

const fill = (line, values) => line.replace(/\{(\w+)(?::(\w+))?\}/g, (all, name, kind) => (kinds[kind] ?? String)(values[name]));

// The effect's own lines, whose conditions effect_code.h lists.
function linesOf(step, language) {
    const {effect, values} = step;
    if (effect[language] === "") {
        return [`// ${effect.title}: from C++ only`];
    }
    return effect[language].split("\n").flatMap((line) => {
        const [, not, name, rest] = line.match(/^(!?)(\w+)\? (.*)/) ?? [];
        if (name === undefined) {
            return fill(line, values);
        }
        if (name === "each") {
            return changedOf(step).map(({name: key}) => fill(rest, {key, value: values[key]}));
        }
        return Boolean(values[name]) === (not === "") ? fill(rest, values) : [];
    });
}

export function asCode(steps, language, about) {
    const lines = steps.flatMap((step) => linesOf(step, language));
    const isHead = (line) => /^(#include|import) /.test(line);
    return [...[...new Set(lines.filter(isHead))].sort(), "", about, ...lines.filter((line) => !isHead(line))].join("\n");
}
