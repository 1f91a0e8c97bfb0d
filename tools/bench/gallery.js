// SPDX-License-Identifier: Apache-2.0
// The gallery: one effect at a time on the stage, its prepared pictures as strips over each parameter's range, and the
// code that makes what is shown. What is chosen stands in the address: #/distorted/mStrength=10.

const data = JSON.parse(document.getElementById("data").textContent);
const effects = new Map(data.effects.map((effect) => [effect.id, effect]));
const stageHost = document.querySelector(".stage");
const film = document.querySelector(".film");
const speed = document.querySelector(".speed");
const rail = document.querySelector(".rail");
const inspector = document.querySelector(".inspector");
const status = document.getElementById("status");
const stage = createStage(stageHost, {enlarge: 3});
const speedId = "speed";
const codeKinds = [["command", "Command"], ["cpp", "C++"], ["java", "Java"]];
let codeKind = "command";
let shown = null;  // {effect, picture}

// Rail

function railItem(id, name, thumbnail) {
    const picture = thumbnail === null ? make("div", {class: "blank bars"}) :
        make("img", {src: thumbnail, alt: "", loading: "lazy", width: 160, height: 120});
    return make("li", {}, make("a", {class: "rail-item", href: `#/${id}`, "data-id": id}, picture, make("span", {}, name)));
}

function fillRail() {
    for (const group of data.groups) {
        const members = data.effects.filter((effect) => effect.group === group);
        if (members.length > 0) {
            rail.append(make("section", {"aria-label": group}, make("h2", {}, group),
                make("ul", {}, ...members.map((effect) => railItem(effect.id, effect.name, effect.thumbnail)))));
        }
    }
    if (data.speed !== null) {
        const item = railItem(speedId, "Ratios", null);
        rail.append(make("section", {"aria-label": "Speed"}, make("h2", {}, "Speed"), make("ul", {}, item)));
    }
}

function markRail(id) {
    for (const item of rail.querySelectorAll(".rail-item")) {
        if (item.dataset.id === id) {
            item.setAttribute("aria-current", "true");
            item.scrollIntoView({block: "nearest", inline: "nearest"});
        } else {
            item.removeAttribute("aria-current");
        }
    }
}

// Inspector

function facts(parameter) {
    const known = [parameter.type, parameter.range.replace(" ... ", " to "),
        parameter.default === "" ? "" : `default ${parameter.default}`];
    return known.filter((text) => text !== "").join(", ");
}

function strip(effect, parameter) {
    const id = `${effect.id}-${parameter.name}`;
    const values = parameter.values.map(({value, picture}) => {
        const input = make("input", {type: "radio", class: "spoken", name: id, value, "data-parameter": parameter.name});
        input.checked = picture === shown.picture || (value === parameter.chosen && !parameter.values.some((other) =>
            other.picture === shown.picture));
        input.addEventListener("change", () => go(effect, picture === 0 ? null : [parameter.name, value]));
        return make("label", {}, input, make("img", {src: effect.pictures[picture].src, alt: "", loading: "lazy",
            width: effect.width, height: effect.height}), make("span", {}, value));
    });
    return make("fieldset", {class: "strip"},
        make("legend", {}, parameter.name, " ", make("span", {class: "caption"}, facts(parameter))),
        make("p", {class: "caption"}, sentence(parameter.summary)),
        make("div", {class: "strip-values"}, ...values));
}

const sentence = (text) => text.charAt(0).toUpperCase() + text.slice(1);

function parameterSection(effect) {
    const section = make("section", {}, make("h3", {}, effect.parameters.length > 0 ? "Parameters" : "No parameters"));
    const plain = effect.parameters.filter((parameter) => parameter.values.length === 0);
    for (const parameter of effect.parameters.filter((parameter) => parameter.values.length > 0)) {
        section.append(strip(effect, parameter));
    }
    if (plain.length > 0) {
        section.append(make("dl", {class: "facts"}, ...plain.flatMap((parameter) => [
            make("dt", {}, parameter.name, " ", make("span", {class: "caption"}, facts(parameter))),
            make("dd", {class: "caption"}, sentence(parameter.summary))])));
    }
    return section;
}

async function copy(text, button) {
    try {
        await navigator.clipboard.writeText(text);
    } catch {
        // Without leave to use the clipboard the text is selected, for the reader's own key.
        getSelection().selectAllChildren(button.parentElement.querySelector("pre"));
        status.textContent = "Selected: copy with your own key";
        return;
    }
    button.textContent = "Copied";
    status.textContent = "Copied";
    setTimeout(() => { button.textContent = "Copy"; }, 1500);
}

// A line may break between the words of a command, not within one.
function codeText(kind, text) {
    return kind === "command" ? text.split(/(?<= )/).map((word) => make("span", {class: "word"}, word)) : [text];
}

function codeSection(picture) {
    const kinds = codeKinds.filter(([kind]) => picture[kind]);
    const open = kinds.some(([kind]) => kind === codeKind) ? codeKind : "command";
    const text = make("code", {}, ...codeText(open, picture[open]));
    const button = make("button", {type: "button", class: "copy"}, "Copy");
    button.addEventListener("click", () => copy(picture[codeKind in picture && picture[codeKind] ? codeKind : "command"], button));
    const panel = make("div", {class: "code", role: "tabpanel", id: "code-panel", tabindex: "0", "aria-labelledby": `tab-${open}`},
        make("pre", {}, text), button);
    const tabs = kinds.map(([kind, name]) => make("button", {type: "button", role: "tab", id: `tab-${kind}`,
        "aria-controls": "code-panel", "aria-selected": `${kind === open}`, tabindex: kind === open ? "0" : "-1"}, name));
    const choose = (index, focuses) => {
        codeKind = kinds[index][0];
        text.replaceChildren(...codeText(codeKind, picture[codeKind]));
        panel.setAttribute("aria-labelledby", tabs[index].id);
        tabs.forEach((tab, i) => {
            tab.setAttribute("aria-selected", i === index);
            tab.tabIndex = i === index ? 0 : -1;
        });
        if (focuses) {
            tabs[index].focus();
        }
    };
    tabs.forEach((tab, index) => {
        tab.addEventListener("click", () => choose(index, false));
        tab.addEventListener("keydown", (event) => {
            const step = {ArrowRight: 1, ArrowLeft: -1}[event.key];
            if (step !== undefined) {
                event.preventDefault();
                choose((index + step + tabs.length) % tabs.length, true);
            }
        });
    });
    const section = make("section", {class: "code-section"}, make("div", {class: "tabs", role: "tablist", "aria-label": "Code"}, ...tabs),
        panel);
    if (picture.cpp && !picture.java) {
        section.append(make("p", {class: "caption"}, "The Java classes do not have this call."));
    }
    return section;
}

function saidSection(effect, picture) {
    const colors = picture.said.match(/#[0-9A-F]{6}/g);
    if (colors === null) {
        return make("p", {class: "caption"}, `It says: ${picture.said}`);
    }
    return make("ul", {class: "swatches", "aria-label": "The palette"}, ...colors.map((color) => {
        const item = make("li", {title: color}, make("span", {class: "spoken"}, color));
        item.style.background = color;
        return item;
    }));
}

function behaviourSection(effect) {
    const items = effect.behaviours.map((cells) => {
        const item = make("li", {});
        item.innerHTML = cells.map((cell) => `<p>${cell}</p>`).join("");
        return item;
    });
    return make("section", {class: "behaviours"}, make("details", {},
        make("summary", {}, `Known behaviours (${items.length})`), make("ul", {}, ...items)));
}

function fillInspector() {
    const {effect} = shown;
    const picture = effect.pictures[shown.picture];
    const head = make("header", {}, make("h2", {class: "name"}, effect.name), make("p", {}, effect.summary));
    if (picture.said !== "") {
        head.append(saidSection(effect, picture));
    }
    const sections = [head, parameterSection(effect), codeSection(picture)];
    if (effect.behaviours.length > 0) {
        sections.push(behaviourSection(effect));
    }
    inspector.replaceChildren(...sections);
}

// Panorama: the frames where their offsets put them, over the whole picture.

function draw(tag, attributes, ...children) {
    const shape = document.createElementNS("http://www.w3.org/2000/svg", tag);
    for (const [name, value] of Object.entries(attributes)) {
        shape.setAttribute(name, value);
    }
    shape.append(...children);
    return shape;
}

function filmPicture(effect) {
    const {frame, readings} = effect.film;
    const taken = readings.filter((reading) => reading.result === "NO_ERROR");
    const last = taken[taken.length - 1];
    const marks = [draw("path", {class: "veil", "fill-rule": "evenodd",
        d: `M0 0H${effect.width}V${effect.height}H0ZM${taken[0].offset_x} 0H${last.offset_x + frame[0]}V${frame[1]}H${taken[0].offset_x}Z`})];
    taken.forEach((reading, index) => {
        const inset = 6 + 5 * (taken.length - index);
        marks.push(draw("rect", {class: "frame", x: reading.offset_x + 2, y: inset, width: frame[0] - 4,
            height: frame[1] - 2 * inset, rx: 6}));
        const x = reading.offset_x + 30;
        marks.push(draw("circle", {class: "tag", cx: x, cy: frame[1] - inset - 28, r: 20}),
            draw("text", {x, y: frame[1] - inset - 28}, `${reading.row}`));
    });
    const from = frame[0] / 2;
    const to = last.offset_x + frame[0] / 2;
    const middle = effect.height / 2;
    marks.push(draw("path", {class: "way", d: `M${from} ${middle}H${to}M${to - 22} ${middle - 18}L${to} ${middle}L${to - 22} ${middle + 18}`}));
    const picture = make("div", {class: "film-picture"},
        make("img", {src: effect.pictures[0].src, width: effect.width, height: effect.height,
            alt: `Frames ${taken.map((reading) => reading.row).join(", ")} of the sweep, each where its offset puts it, over the whole picture; an arrow shows the direction, ${words(last.direction)}`}),
        draw("svg", {viewBox: `0 0 ${effect.width} ${effect.height}`, "aria-hidden": "true"}, ...marks));
    picture.style.setProperty("--shape", effect.width / effect.height);
    return picture;
}

const words = (name) => name.toLowerCase().replaceAll("_", " ");

function fillFilm(effect) {
    const results = {NO_ERROR: "taken", INVALID_PARAMETER: "sets the reference"};
    const row = (tag, cells) => make("tr", {}, ...cells.map((cell) => make(tag, tag === "th" ? {scope: "col"} : {}, `${cell}`)));
    const table = make("table", {}, make("thead", {}, row("th", ["Frame", "Result", "Direction", "Offset x", "Offset y"])),
        make("tbody", {}, ...effect.film.readings.map((reading) => row("td", [reading.row,
            results[reading.result] ?? words(reading.result), words(reading.direction), reading.offset_x, reading.offset_y]))));
    film.replaceChildren(filmPicture(effect), table);
}

// Speed

function fillSpeed() {
    const ratios = data.speed.comparisons.flatMap((comparison) => comparison.rows.map((row) => row.faster));
    const least = Math.log2(Math.min(0.5, ...ratios));
    const most = Math.log2(Math.max(4, ...ratios));
    const place = (ratio) => 100 * (Math.log2(ratio) - least) / (most - least);
    const table = make("table", {}, make("caption", {}, make("h2", {class: "name"}, "Speed against the peers"),
        make("p", {}, "How many times as fast as each peer; to the right of the line korvane is faster. The scale doubles."),
        make("p", {class: "caption"}, `${data.speed.machine.trim()}; ${data.speed.date}`)),
        make("colgroup", {}, make("col", {class: "peer"}), make("col"), make("col", {class: "ratio"})));
    for (const comparison of data.speed.comparisons) {
        const body = make("tbody", {}, make("tr", {}, make("th", {colspan: 3, scope: "rowgroup"}, comparison.name, " ",
            make("span", {class: "caption"}, `${comparison.milliseconds.toPrecision(3)} ms`))));
        for (const row of comparison.rows) {
            const scale = make("div", {class: row.faster < 1 ? "scale slower" : "scale"});
            scale.style.setProperty("--even", `${place(1)}%`);
            scale.style.setProperty("--from", `${Math.min(place(1), place(row.faster))}%`);
            scale.style.setProperty("--length", `${Math.abs(place(row.faster) - place(1))}%`);
            body.append(make("tr", {}, make("td", {}, row.name), make("td", {"aria-hidden": "true"}, scale),
                make("td", {}, `${row.faster.toPrecision(3)} \u00D7`, make("span", {class: "wide"}, " as fast"))));
        }
        table.append(body);
    }
    speed.replaceChildren(table);
    inspector.replaceChildren(make("header", {}, make("h2", {class: "name"}, "Speed"),
        make("p", {}, "From the last run of the benchmarks: the median of many rounds, in which all contestants take turns on one thread.")),
        codeSection({command: "./dev bench"}));
}

// What is shown

function go(effect, setting) {
    location.hash = setting === null ? `/${effect.id}` : `/${effect.id}/${setting.join("=")}`;
}

function pictureOf(effect, setting) {
    const [name, value] = (setting ?? "").split("=");
    const parameter = effect.parameters.find((candidate) => candidate.name === name);
    return parameter?.values.find((candidate) => candidate.value === value)?.picture ?? 0;
}

function show() {
    const [id, setting] = decodeURIComponent(location.hash.replace(/^#\/?/, "")).split("/");
    const isSpeed = id === speedId && data.speed !== null;
    const effect = effects.get(id) ?? data.effects[0];
    const focused = document.activeElement?.dataset?.parameter;
    stageHost.hidden = isSpeed || effect.film !== undefined;
    film.hidden = isSpeed || effect.film === undefined;
    speed.hidden = !isSpeed;
    markRail(isSpeed ? speedId : effect.id);
    document.title = `${isSpeed ? "Speed" : effect.name} \u2013 korvane effects`;
    if (isSpeed) {
        shown = null;
        fillSpeed();
        return;
    }
    const isNew = shown?.effect !== effect;
    shown = {effect, picture: pictureOf(effect, setting)};
    fillInspector();
    if (isNew) {
        inspector.scrollTop = 0;
    } else if (focused !== undefined) {
        inspector.querySelector(`input[data-parameter="${focused}"]:checked`)?.focus({preventScroll: true});
    }
    if (effect.film !== undefined) {
        fillFilm(effect);
        return;
    }
    const {src, text} = effect.pictures[shown.picture];
    stage.show({width: effect.width, height: effect.height,
        before: {src: effect.before, text: `${effect.name}, before`, tag: effect.tags[0]}, after: {src, text, tag: effect.tags[1]}});
}

function step(distance) {
    const index = data.effects.indexOf(shown?.effect);
    go(data.effects[(index + distance + data.effects.length) % data.effects.length], null);
}

const keysDialog = document.getElementById("keys");
const ownKeys = [["J", "next effect"], ["K", "the effect before"], ["?", "this list"]];
for (const [key, text] of [...stageKeys, ...ownKeys]) {
    keysDialog.querySelector(".keys").append(make("dt", {}, make("kbd", {}, key)), make("dd", {}, text));
}
document.getElementById("keys-button").addEventListener("click", () => keysDialog.showModal());
document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || keysDialog.open) {
        return;
    }
    const keys = {"?": () => keysDialog.showModal(), j: () => step(1), k: () => step(-1)};
    keys[event.key]?.();
});
window.addEventListener("hashchange", show);
fillRail();
show();
