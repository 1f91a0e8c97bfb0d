// SPDX-License-Identifier: Apache-2.0
// The playground: a photo, a chain of effects, and what the server makes of them. Paths are relative to the page's own,
// which has the token in it.
import {asCode, asCommand} from "./code.js";
import {createStage, make, pause, stageKeys} from "./stage.js";

const maxFileBytes = 64 * 1024 * 1024;
const fullPixels = 2_000_000;
const thumbPixels = 176 * 132;
const settleMs = 160;
const retryMs = 1000;

const $ = (id) => document.getElementById(id);
const all = document.querySelectorAll.bind(document);
const stage = createStage($("stage"));
const page = String(Math.random());

let effects = [];
let photo = null;          // what the server knows of it, with its name and its file or sample
let chain = [];            // {effect, values, isOn}
let active = 0;
let isAdding = false;
let codeKind = "command";
let beforeUrl = null;
let opening = 0;           // counts the photos, so that a late answer for an older one is dropped

// Notices and speech

function say(text) {
    $("said").textContent = text;
}

function showError(text) {
    $("error").textContent = text;
    $("error").hidden = text === "";
}

// What was overtaken, and what the banner says, has no text.
function showRefusal({message}, advice = "") {
    if (message !== "") {
        showError(`${message}.${advice}`);
    }
}

// The server

class Refusal extends Error {
    constructor(status, text) {
        super(text);
        this.status = status;
    }
}

function setGone(isGone, text = "The server does not answer. Trying again by itself.") {
    $("gone-text").textContent = text;
    $("gone").hidden = !isGone;
}

// No page may find out the token of a server started anew. The fragment takes the chain along.
function openNewLink() {
    const link = $("new-link").value.trim();
    if (/^http:\/\/[^/]+\/[0-9a-f]{32}\/$/.test(link)) {
        location.assign(link + location.hash);
    } else {
        showError("This is not the link that 'korvane serve' prints.");
    }
}

// Asks until the server answers. What it has too much of, it takes a second later.
async function ask(path, body, isWanted = () => true) {
    for (;;) {
        let response;
        try {
            response = await fetch(path, body === undefined ? {} : {method: "POST", body});
        } catch {
            setGone(true);
            await pause(retryMs);
            if (!isWanted()) {
                throw new Refusal(409, "");
            }
            continue;
        }
        setGone(false);
        if (response.ok) {
            return response;
        }
        if (response.status === 503 && isWanted()) {
            await pause(retryMs);
            continue;
        }
        if (response.status === 403) {
            setGone(true, "The server was started anew.");
        }
        const {error = `The server answers with ${response.status}`} = await response.json().catch(() => ({}));
        throw new Refusal(response.status, [403, 409].includes(response.status) ? "" : error);
    }
}

const askJson = async (path, question) => (await ask(path, JSON.stringify(question))).json();

// Photos

async function sendPhoto(source) {
    const answer = source.sample !== undefined
        ? await askJson("api/samples", {name: source.sample})
        : await (await ask("api/photos", source.file)).json();
    return {...answer, source, name: source.sample !== undefined ? `${source.sample}.png` : source.file.name};
}

function drop(id) {
    navigator.sendBeacon("api/drop", JSON.stringify({photo: id}));
}

async function openPhoto(source) {
    if (source.file !== undefined && source.file.size > maxFileBytes) {
        showError("This file is larger than 64 MB. Choose a smaller one.");
        return;
    }
    const call = ++opening;
    showError("");
    stage.setBusy(true);
    try {
        await loading;
        const next = await sendPhoto(source);
        const before = await (await ask("api/preview", JSON.stringify({photo: next.id, chain: []}))).blob();
        if (call !== opening) {
            drop(next.id);
            return;
        }
        if (photo !== null) {
            drop(photo.id);
        }
        photo = next;
        URL.revokeObjectURL(beforeUrl);
        beforeUrl = URL.createObjectURL(before);
        $("empty").hidden = true;
        $("save").disabled = false;
        $("format").value = photo.format;
        $("facts").textContent = `${photo.name}, ${photo.width} × ${photo.height}` +
            (photo.previewWidth < photo.width ? `, shown at ${photo.previewWidth} × ${photo.previewHeight}` : "");
        if (photo.warnings.length > 0) {
            showError(`${photo.warnings[0]}. What could be read is shown.`);
        }
        showCode();
        refresh(0);
        await showThumbs();
    } catch (error) {
        if (call === opening) {
            showRefusal(error, " Choose another photo.");
        }
    }
    if (call === opening) {
        stage.setBusy(isAsking);
    }
}

// Runs `work` with the photo's name on the server; a photo that the server has forgotten is sent anew.
async function withPhoto(work) {
    const current = photo;
    try {
        return await work(current.id);
    } catch (error) {
        if (!(error instanceof Refusal) || error.status !== 404 || photo !== current) {
            throw error;
        }
        Object.assign(current, await sendPhoto(current.source));
        return work(current.id);
    }
}

const question = (steps) => steps.map(({effect, values}) => ({effect: effect.id, values}));
const running = () => chain.filter((step) => step.isOn);

async function showThumbs() {
    const current = photo;
    for (const effect of effects) {
        if (photo !== current) {
            return;
        }
        const values = defaultsOf(effect);
        try {
            const blob = await (await withPhoto((id) => ask("api/preview",
                JSON.stringify({photo: id, pixels: thumbPixels, chain: question([{effect, values}])}),
                () => photo === current))).blob();
            const image = $(`thumb-${effect.id}`);
            const url = URL.createObjectURL(blob);
            image.onload = () => URL.revokeObjectURL(url);
            image.src = url;
            image.hidden = false;
            image.nextElementSibling.hidden = true;
        } catch {
            // An effect that this photo is too small for keeps its blank.
        }
    }
}

// The preview: one question at a time, the newest next. While a value moves, the answer has the stage's size; at rest it is
// as large as previews are.

let isAsking = false;
let wanted = null;
let settleTimer = 0;

function stagePixels() {
    const area = $("stage").clientWidth * $("stage").clientHeight * devicePixelRatio ** 2;
    return Math.round(Math.min(fullPixels, Math.max(100_000, area / 2)));
}

function refresh(delay = settleMs) {
    if (photo === null) {
        return;
    }
    stage.setStale(true);
    clearTimeout(settleTimer);
    wanted = delay > 0 ? stagePixels() : fullPixels;
    if (delay > 0) {
        settleTimer = setTimeout(() => { wanted = fullPixels; askPreview(); }, delay);
    }
    askPreview();
}

const say_values = ({effect, values}) => [effect.title,
    ...effect.parameters.map((parameter) => `${nameOf(parameter).toLowerCase()} ${values[parameter.name]}`)].join(", ");

async function askPreview() {
    if (isAsking) {
        return;
    }
    isAsking = true;
    stage.setBusy(true);
    while (wanted !== null) {
        const pixels = wanted;
        wanted = null;
        const steps = running();
        const current = photo;
        try {
            const answer = await withPhoto((id) => ask("api/preview",
                JSON.stringify({photo: id, page, pixels, chain: question(steps)}), () => wanted === null));
            const url = URL.createObjectURL(await answer.blob());
            if (photo === current) {
                const text = steps.map(say_values).join("; then ") || "no effect";
                await stage.show({width: photo.previewWidth, height: photo.previewHeight,
                    before: {src: beforeUrl, text: `${photo.name}, unchanged`},
                    after: {src: url, text, tag: steps.map(({effect}) => effect.title).join(" + ") || "No effect"}});
                stage.setStale(wanted !== null);
                showTiming(answer.headers.get("Server-Timing"));
                showError("");
            }
            URL.revokeObjectURL(url);
        } catch (error) {
            showRefusal(error);
        }
    }
    isAsking = false;
    stage.setBusy(false);
}

// "copy;dur=1.5, draw;dur=20.0"
function showTiming(header) {
    const parts = [...header.matchAll(/(\w+);dur=([\d.]+)/g)].map(([, name, time]) => [name, Math.round(time)]);
    const sum = parts.reduce((total, [, time]) => total + time, 0);
    $("timing").textContent = `Made in ${sum} ms: ${parts.map((part) => part.join(" ")).join(", ")}`;
}

// The chain

const defaultsOf = (effect) => Object.fromEntries(effect.parameters.map(({name, initial}) => [name, initial]));

const capital = (text) => text.charAt(0).toUpperCase() + text.slice(1);

function nameOf({name}) {
    return capital(name.replace(/^m(?=[A-Z])/, "").replace(/([a-z])([A-Z]|[xy]$)/g, "$1 $2").toLowerCase());
}

// In the fragment: [[effect, {values that are not the defaults}, 0 when off], ...].
function writeFragment() {
    const rows = chain.map(({effect, values, isOn}) => {
        const changed = effect.parameters.filter(({name, initial}) => values[name] !== initial)
            .map(({name}) => [name, values[name]]);
        return isOn ? [effect.id, Object.fromEntries(changed)] : [effect.id, Object.fromEntries(changed), 0];
    });
    history.replaceState(null, "", `#${encodeURIComponent(JSON.stringify(rows))}`);
}

// Nothing for a fragment that is not ours. The server checks the values.
function readFragment() {
    try {
        return JSON.parse(decodeURIComponent(location.hash.slice(1))).flatMap(([id, given, isOn]) => {
            const effect = effects.find((candidate) => candidate.id === id);
            if (effect === undefined) {
                return [];
            }
            const values = {...defaultsOf(effect), ...given};
            return [{effect, values, isOn: isOn !== 0}];
        });
    } catch {
        return [];
    }
}

function changed(delay) {
    writeFragment();
    showCode();
    refresh(delay);
}

function chooseEffect(effect) {
    const step = {effect, values: defaultsOf(effect), isOn: true};
    if (isAdding || chain.length === 0) {
        active = chain.push(step) - 1;
    } else if (chain[active].effect !== effect) {
        chain[active] = step;
    }
    isAdding = false;
    showAll();
    changed(0);
}

function moveStep(index, by) {
    const [step] = chain.splice(index, 1);
    chain.splice(index + by, 0, step);
    active = index + by;
    showAll();
    changed(0);
    say(`${step.effect.title} is now number ${active + 1}`);
}

// What is shown

function showRail() {
    $("rail").replaceChildren();
    for (const group of new Set(effects.map((effect) => effect.group))) {
        $("rail").append(make("section", {}, make("h2", {}, group), make("ul", {},
            ...effects.filter((effect) => effect.group === group).map((effect) => make("li", {},
                make("button", {type: "button", class: "rail-item", "data-effect": effect.id,
                    onclick: () => chooseEffect(effect)},
                make("img", {id: `thumb-${effect.id}`, alt: "", width: 176, height: 132, hidden: true}),
                make("span", {class: "blank"}), make("span", {class: "name"}, effect.title)))))));
    }
}

function markActive() {
    const id = chain[active]?.effect.id;
    for (const item of all(".rail-item")) {
        item.setAttribute("aria-pressed", item.dataset.effect === id && !isAdding);
    }
    $("add").classList.toggle("adding", isAdding);
    $("add").textContent = isAdding ? "Now choose it from the effects" : "Add an effect";
}

// Wide ranges are bent, so that the small values that people want get most of the slider's way.
function curveOf({kind, least, most}) {
    const power = kind === "number" && most - least > 100 ? 3 : most - least > 200 ? 2 : 1;
    const reach = Math.max(Math.abs(least), Math.abs(most));
    return {
        toSlider: (value) => power === 1 ? value : Math.sign(value) * (Math.abs(value) / reach) ** (1 / power) * 1000,
        toValue: (at) => power === 1 ? at : Math.sign(at) * (Math.abs(at) / 1000) ** power * reach,
        least: power === 1 ? least : least < 0 ? -1000 : 0,
        most: power === 1 ? most : 1000,
        step: power !== 1 || kind === "integer" ? 1 : (most - least) / 200,
    };
}

const rounded = (value, {kind}) => kind === "integer" ? Math.round(value) : Number(value.toPrecision(4));

function numberRow(parameter, step) {
    const id = `p-${parameter.name}`;
    const curve = curveOf(parameter);
    const {least, most, initial} = parameter;
    const slider = make("input", {type: "range", id: `${id}-slider`, "aria-label": nameOf(parameter), min: curve.least,
        max: curve.most, step: curve.step});
    const number = make("input", {type: "number", id, min: least, max: most,
        step: parameter.kind === "integer" ? 1 : "any"});
    const reset = make("button", {type: "button", class: "reset"}, "Reset");
    const show = (except) => {
        const value = step.values[parameter.name];
        if (except !== slider) {
            slider.value = curve.toSlider(value);
        }
        if (except !== number) {
            number.value = value;
        }
        slider.setAttribute("aria-valuetext", `${value} ${parameter.unit}`.trim());
        reset.hidden = value === initial;
    };
    const set = (value, from) => {
        step.values[parameter.name] = Math.min(Math.max(rounded(value, parameter), least), most);
        show(from);
        changed();
    };
    // Where the slider is bent, a step of its own may be less than 1.
    slider.addEventListener("keydown", (event) => {
        const by = {ArrowLeft: -1, ArrowDown: -1, ArrowRight: 1, ArrowUp: 1}[event.key];
        if (by !== undefined && parameter.kind === "integer") {
            event.preventDefault();
            set(step.values[parameter.name] + by, null);
        }
    });
    slider.addEventListener("input", () => set(curve.toValue(slider.valueAsNumber), slider));
    number.addEventListener("input", () => Number.isFinite(number.valueAsNumber) && set(number.valueAsNumber, number));
    number.addEventListener("change", () => show(null));
    reset.addEventListener("click", () => { set(initial, null); number.focus(); });
    show(null);
    return make("div", {class: "parameter"}, make("label", {for: id}, nameOf(parameter)), number, slider,
        make("span", {class: "caption"},
            `${capital(parameter.summary)}; ${least} to ${most}${parameter.unit && ` ${parameter.unit}`}, default ${initial} `, reset));
}

function otherRow(parameter, step) {
    const id = `p-${parameter.name}`;
    const isSwitch = parameter.kind === "switch";
    const types = {switch: "checkbox", color: "color", text: "text"};
    const input = make("input", {type: types[parameter.kind], id, autocomplete: "off"});
    if (isSwitch) {
        input.checked = step.values[parameter.name];
    } else {
        input.value = step.values[parameter.name];
    }
    input.addEventListener("input", () => {
        step.values[parameter.name] = isSwitch ? input.checked : input.value;
        changed();
    });
    return make("div", {class: "parameter"}, make("label", {for: id}, nameOf(parameter)), input,
        make("span", {class: "caption"}, parameter.summary));
}

function showInspector() {
    const step = chain[active];
    $("title").textContent = step?.effect.title ?? "No effect";
    $("summary").textContent = step?.effect.summary ?? "Choose one from the list.";
    const isNumber = ({kind}) => kind === "number" || kind === "integer";
    $("parameters").replaceChildren(...(step?.effect.parameters ?? []).map((parameter) =>
        (isNumber(parameter) ? numberRow : otherRow)(parameter, step)));
    $("parameters").hidden = !step || step.effect.parameters.length === 0;
    const behaviours = step?.effect.behaviours ?? [];
    $("behaviours").hidden = behaviours.length === 0;
    $("behaviours-title").textContent = `Known behaviours (${behaviours.length})`;
    // What stands between backquotes is code.
    $("behaviour-list").replaceChildren(...behaviours.map((cells) => make("li", {}, ...cells.map((cell) =>
        make("p", {}, ...cell.split("`").map((part, index) => index % 2 === 1 ? make("code", {}, part) : part))))));
}

function showChain() {
    $("chain").replaceChildren(...chain.map((step, index) => {
        const {title} = step.effect;
        const icon = (text, label, onclick, disabled) => make("button", {type: "button", class: "icon-button quiet-button",
            "aria-label": `${label}: ${title}`, title: label, disabled, onclick}, text);
        const on = make("input", {type: "checkbox", "aria-label": `Use ${title}`, onchange: (event) => {
            step.isOn = event.target.checked;
            event.target.closest("li").classList.toggle("off", !step.isOn);
            changed(0);
        }});
        on.checked = step.isOn;
        return make("li", {class: step.isOn ? "" : "off"}, make("label", {class: "icon-button"}, on),
            make("button", {type: "button", class: "step", "aria-current": index === active,
                onclick: () => { active = index; isAdding = false; showAll(); }}, title),
            icon("↑", "Earlier", () => moveStep(index, -1), index === 0),
            icon("↓", "Later", () => moveStep(index, 1), index === chain.length - 1),
            icon("×", "Remove", () => {
                chain.splice(index, 1);
                active = Math.max(0, Math.min(active, chain.length - 1));
                showAll();
                changed(0);
                $("add").focus();
            }, false));
    }));
}

function outputName() {
    const base = (photo?.name ?? "photo.jpg").replace(/\.[^.]*$/, "");
    return `${base}-${running().map(({effect}) => effect.id).join("-") || "same"}.${$("format").value}`;
}

function showCode() {
    const makers = {command: () => asCommand(running(), photo?.name ?? "photo.jpg", outputName()),
        cpp: () => asCode(running(), "cpp", "// rgba: width * height pixels of four bytes"),
        java: () => asCode(running(), "java", "// bitmap: mutable, ARGB_8888")};
    $("code").textContent = makers[codeKind]();
    for (const tab of all("[role=tab]")) {
        const isSelected = tab.dataset.code === codeKind;
        tab.setAttribute("aria-selected", isSelected);
        tab.tabIndex = isSelected ? 0 : -1;
    }
}

function showAll() {
    markActive();
    showInspector();
    showChain();
    showCode();
}

// What people do

async function copy(text, button) {
    try {
        await navigator.clipboard.writeText(text);
    } catch {
        // Without the permission, or on another address than this machine's: the old way.
        const field = make("textarea", {class: "spoken"});
        field.value = text;
        document.body.append(field);
        field.select();
        document.execCommand("copy");
        field.remove();
    }
    button.textContent = "Copied";
    say("Copied");
    await pause(1200);
    button.textContent = button.dataset.text;
}

async function save() {
    $("save").disabled = true;
    stage.setBusy(true);
    try {
        const name = outputName();
        const answer = await withPhoto((id) => ask("api/save",
            JSON.stringify({photo: id, chain: question(running()), format: $("format").value})));
        const url = URL.createObjectURL(await answer.blob());
        make("a", {href: url, download: name}).click();
        setTimeout(() => URL.revokeObjectURL(url), 60_000);
        say(`Saved as ${name}`);
    } catch (error) {
        showRefusal(error);
    } finally {
        $("save").disabled = false;
        stage.setBusy(false);
    }
}

function listen() {
    $("open").addEventListener("click", () => $("file").click());
    $("file").addEventListener("change", () => {
        const [file] = $("file").files;
        if (file !== undefined) {
            openPhoto({file});
        }
        $("file").value = "";
    });
    for (const button of all("[data-sample]")) {
        button.addEventListener("click", () => openPhoto({sample: button.dataset.sample}));
    }
    let depth = 0;
    const receiving = (change) => {
        depth = change === 0 ? 0 : Math.max(0, depth + change);
        $("stage").classList.toggle("receiving", depth > 0);
    };
    addEventListener("dragenter", () => receiving(1));
    addEventListener("dragleave", () => receiving(-1));
    addEventListener("dragover", (event) => event.preventDefault());
    addEventListener("drop", (event) => {
        event.preventDefault();
        receiving(0);
        const [file] = event.dataTransfer.files;
        if (file !== undefined) {
            openPhoto({file});
        }
    });
    $("save").addEventListener("click", save);
    $("format").addEventListener("change", showCode);
    $("copy").addEventListener("click", () => copy($("code").textContent, $("copy")));
    $("link").addEventListener("click", () => copy(location.href, $("link")));
    for (const button of [$("copy"), $("link")]) {
        button.dataset.text = button.textContent;
    }
    $("add").addEventListener("click", () => {
        isAdding = !isAdding;
        markActive();
        say(isAdding ? "Choose the effect to add" : "");
    });
    const tabs = [...all("[role=tab]")];
    for (const [index, tab] of tabs.entries()) {
        tab.addEventListener("click", () => { codeKind = tab.dataset.code; showCode(); });
        tab.addEventListener("keydown", (event) => {
            const by = {ArrowLeft: -1, ArrowRight: 1}[event.key];
            if (by !== undefined) {
                event.preventDefault();
                const next = tabs[(index + by + tabs.length) % tabs.length];
                next.click();
                next.focus();
            }
        });
    }
    $("go").addEventListener("click", openNewLink);
    $("new-link").addEventListener("keydown", (event) => event.key === "Enter" && openNewLink());
    $("help").addEventListener("click", () => $("keys").showModal());
    $("key-list").append(...[...stageKeys, ["?", "this list"]].flatMap(([key, text]) =>
        [make("dt", {}, make("kbd", {}, key)), make("dd", {}, text)]));
    addEventListener("keydown", (event) => {
        if (event.key === "?" && !event.target.closest("input[type=text], dialog")) {
            $("keys").showModal();
        }
    });
    addEventListener("hashchange", () => {
        chain = readFragment();
        active = 0;
        showAll();
        refresh(0);
    });
    addEventListener("pagehide", (event) => photo !== null && !event.persisted && drop(photo.id));
}

// An early photo waits for this.
const loading = ask("api/effects").then((answer) => answer.json());
listen();
effects = await loading;
showRail();
chain = readFragment();
if (chain.length === 0) {
    chain = [{effect: effects[0], values: defaultsOf(effects[0]), isOn: true}];
}
showAll();
