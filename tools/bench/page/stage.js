// SPDX-License-Identifier: Apache-2.0
// The stage: one photo before and after an effect, with a divider between the halves.
//
// This module imports nothing and asks no server, so that a page may hold its text inside itself. Its looks are in
// look.css. Left of the divider is before, right of it after.
//
//   const stage = createStage(document.querySelector(".stage"));
//   stage.show({width, height, before: {src, text}, after: {src, text}});
//
// Pointer: a drag or a tap moves the divider, a double click centres it, the wheel and two fingers zoom; once zoomed, a
// drag beside the divider moves the photo.
// Keys on the divider: arrows, Page Up and Down, Home, End. Keys anywhere outside of fields: see stageKeys.

export const stageKeys = [
    ["Space", "hold to see the original"],
    ["1", "pixels one to one"],
    ["0", "fit the photo"],
    ["+ −", "zoom in and out"],
    ["Shift + arrows", "move a zoomed photo"],
    ["← →", "move the divider, once it has the focus"],
];

const maxZoom = 32;
const busyDelayMs = 150;
const longestDecodeMs = 1000;
const tapReachPx = 4;
const tagGapPx = 8;

export const pause = (ms) => new Promise((resolve) => { setTimeout(resolve, ms); });

const clamp = (value, least, most) => Math.min(Math.max(value, least), most);

// make("p", {class: "caption", onclick: call}, "text", child)
export function make(tag, attributes = {}, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
        if (name.startsWith("on")) {
            element.addEventListener(name.slice(2), value);
        } else if (value !== null && value !== false) {
            element.setAttribute(name, value === true ? "" : value);
        }
    }
    element.append(...children);
    return element;
}

// Keys that type, and the space bar that presses a button, belong to the element that has the focus.
function takesKey(target, key) {
    if (!(target instanceof Element)) {
        return false;
    }
    if (target.closest("input:not([type=range], [type=checkbox]), select, dialog")) {
        return true;
    }
    return key === " " && target.closest("button, a, summary, input, [role=tab]") !== null;
}

// `enlarge`: by how much a small photo may grow to fit the stage.
export function createStage(host, {wheel = true, enlarge = 1} = {}) {
    const sheet = make("div", {class: "stage-sheet"});
    const leftTag = make("span", {class: "stage-tag left", "aria-hidden": "true"});
    const rightTag = make("span", {class: "stage-tag right", "aria-hidden": "true"});
    const busyLine = make("div", {class: "stage-busy", hidden: true});
    const divider = make("div", {class: "stage-divider", role: "slider", tabindex: "0",
        "aria-label": "Divider between before and after", "aria-valuemin": "0", "aria-valuemax": "100"});
    host.append(sheet, leftTag, rightTag, busyLine, divider);
    let pictures = null;   // what show() was given
    let images = null;     // the two <img>
    let latest = 0;        // counts the calls of show()
    let share = 0.5;       // of the visible photo, left of the divider
    let zoom = null;       // CSS pixels for each pixel of the photo; null fits
    let centre = [0.5, 0.5];  // the point of the photo in the middle of the stage
    let showsOriginal = false;
    let busyTimer = 0;
    let box = {left: 0, top: 0, width: 0, height: 0};  // the visible photo, in the stage

    function fittingZoom() {
        const margin = Math.min(host.clientWidth, host.clientHeight) > 400 ? 24 : 0;
        const fit = Math.min((host.clientWidth - margin) / pictures.width, (host.clientHeight - margin) / pictures.height);
        // A speck must be seen in any case.
        return Math.min(fit, Math.max(enlarge, 64 / Math.max(pictures.width, pictures.height)));
    }

    const currentZoom = () => zoom ?? fittingZoom();

    // Along one axis: where the photo begins, with no gap at an edge while it is larger than the stage.
    function place(axis, stageSide, photoSide) {
        if (photoSide <= stageSide) {
            centre[axis] = 0.5;
        } else {
            const half = stageSide / 2 / photoSide;
            centre[axis] = clamp(centre[axis], half, 1 - half);
        }
        return Math.round(stageSide / 2 - centre[axis] * photoSide);
    }

    function layOut() {
        const isEmpty = pictures === null;
        for (const element of [sheet, leftTag, rightTag, divider]) {
            element.hidden = isEmpty;
        }
        if (isEmpty || host.clientWidth === 0) {
            return;
        }
        const scale = currentZoom();
        const width = Math.max(1, pictures.width * scale);
        const height = Math.max(1, pictures.height * scale);
        const left = place(0, host.clientWidth, width);
        const top = place(1, host.clientHeight, height);
        sheet.style.width = `${width}px`;
        sheet.style.height = `${height}px`;
        sheet.style.transform = `translate(${left}px, ${top}px)`;
        box = {left: Math.max(0, left), top: Math.max(0, top)};
        box.width = Math.min(host.clientWidth, left + width) - box.left;
        box.height = Math.min(host.clientHeight, top + height) - box.top;
        const cut = showsOriginal ? box.width : share * box.width;
        const inSheet = box.left + cut - left;
        images?.before.style.setProperty("clip-path", `inset(0 ${width - inSheet}px 0 0)`);
        images?.after.style.setProperty("clip-path", `inset(0 0 0 ${inSheet}px)`);
        divider.style.left = `${box.left + cut}px`;
        divider.style.top = `${box.top}px`;
        divider.style.height = `${box.height}px`;
        divider.hidden = showsOriginal;
        leftTag.style.left = `${box.left + tagGapPx}px`;
        rightTag.style.right = `${host.clientWidth - box.left - box.width + tagGapPx}px`;
        leftTag.style.top = rightTag.style.top = `${box.top + tagGapPx}px`;
        host.classList.toggle("zoomed", width > host.clientWidth + 1 || height > host.clientHeight + 1);
        host.classList.toggle("coarse", scale * devicePixelRatio >= 2);
        const percent = Math.round(share * 100);
        divider.setAttribute("aria-valuenow", percent);
        divider.setAttribute("aria-valuetext", `${percent} % before, ${100 - percent} % after`);
        // A tag stands only on its own half.
        leftTag.style.visibility = cut < leftTag.offsetWidth + tagGapPx ? "hidden" : "visible";
        rightTag.style.visibility =
            showsOriginal || box.width - cut < rightTag.offsetWidth + tagGapPx ? "hidden" : "visible";
    }

    function setShare(value) {
        share = clamp(value, 0, 1);
        layOut();
    }

    function divideAt(clientX) {
        const x = clientX - host.getBoundingClientRect().left;
        setShare(box.width > 0 ? (x - box.left) / box.width : 0.5);
    }

    // Keeps the point of the photo under (clientX, clientY) where it is.
    function zoomAround(clientX, clientY, newZoom) {
        const rect = host.getBoundingClientRect();
        const fromMiddle = [clientX - rect.left - host.clientWidth / 2, clientY - rect.top - host.clientHeight / 2];
        const sides = [pictures.width, pictures.height];
        const old = currentZoom();
        const fit = fittingZoom();
        zoom = clamp(newZoom, Math.min(fit, 1 / devicePixelRatio), Math.max(fit, maxZoom));
        for (const axis of [0, 1]) {
            centre[axis] += fromMiddle[axis] / sides[axis] * (1 / old - 1 / zoom);
        }
        if (Math.abs(zoom / fit - 1) < 0.02) {
            zoom = null;
        }
        layOut();
    }

    function zoomInMiddle(newZoom) {
        const rect = host.getBoundingClientRect();
        zoomAround(rect.left + host.clientWidth / 2, rect.top + host.clientHeight / 2, newZoom);
    }

    function pan(dx, dy) {
        const scale = currentZoom();
        centre[0] -= dx / (pictures.width * scale);
        centre[1] -= dy / (pictures.height * scale);
        layOut();
    }

    function showOriginal(isOn) {
        if (showsOriginal !== isOn) {
            showsOriginal = isOn;
            layOut();
        }
    }

    // Fingers and mouse buttons that are down, by their id.
    const pointers = new Map();
    let drag = null;

    const spread = () => {
        const [a, b] = [...pointers.values()];
        return {x: (a.x + b.x) / 2, y: (a.y + b.y) / 2, distance: Math.max(1, Math.hypot(a.x - b.x, a.y - b.y))};
    };

    host.addEventListener("pointerdown", (event) => {
        if (pictures === null || event.button !== 0 || event.target.closest("a, button, label, input")) {
            return;
        }
        pointers.set(event.pointerId, {x: event.clientX, y: event.clientY});
        if (pointers.size === 2) {
            drag = {kind: "pinch", ...spread()};
            return;
        }
        const isDivider = divider.contains(event.target);
        drag = {kind: isDivider || !host.classList.contains("zoomed") ? "divide" : "pan", x: event.clientX, y: event.clientY,
            isTap: true, isDivider};
        if (isDivider) {
            divider.focus({focusVisible: false});
            event.preventDefault();
        }
        host.setPointerCapture(event.pointerId);
    });

    host.addEventListener("pointermove", (event) => {
        const pointer = pointers.get(event.pointerId);
        if (pointer === undefined || drag === null) {
            return;
        }
        const dx = event.clientX - pointer.x;
        const dy = event.clientY - pointer.y;
        if (drag.kind === "pinch") {
            const before = spread();
            Object.assign(pointer, {x: event.clientX, y: event.clientY});
            const after = spread();
            pan(after.x - before.x, after.y - before.y);
            zoomAround(after.x, after.y, currentZoom() * after.distance / before.distance);
            return;
        }
        if (drag.isTap && Math.hypot(event.clientX - drag.x, event.clientY - drag.y) < tapReachPx) {
            return;
        }
        drag.isTap = false;
        Object.assign(pointer, {x: event.clientX, y: event.clientY});
        if (drag.kind === "divide") {
            divideAt(event.clientX);
        } else {
            host.classList.add("panning");
            pan(dx, dy);
        }
    });

    function release(event) {
        if (!pointers.delete(event.pointerId)) {
            return;
        }
        if (event.type === "pointerup" && drag?.isTap && !drag.isDivider) {
            divideAt(event.clientX);
        }
        drag = null;
        host.classList.remove("panning");
    }
    host.addEventListener("pointerup", release);
    host.addEventListener("pointercancel", release);

    host.addEventListener("dblclick", (event) => {
        if (pictures !== null && !event.target.closest("a, button")) {
            setShare(0.5);
        }
    });

    host.addEventListener("wheel", (event) => {
        // A pinch on a touch pad arrives as a wheel with the control key.
        if (pictures === null || (!wheel && !event.ctrlKey)) {
            return;
        }
        event.preventDefault();
        const lines = event.deltaMode === 1 ? 16 : 1;
        const step = clamp(event.deltaY * lines, -120, 120) * (event.ctrlKey ? 0.01 : 0.002);
        zoomAround(event.clientX, event.clientY, currentZoom() * Math.exp(-step));
    }, {passive: false});

    divider.addEventListener("keydown", (event) => {
        const steps = {ArrowLeft: -0.01, ArrowDown: -0.01, ArrowRight: 0.01, ArrowUp: 0.01, PageDown: -0.1, PageUp: 0.1,
            Home: -1, End: 1};
        const step = steps[event.key];
        if (step !== undefined && !event.shiftKey && !event.ctrlKey && !event.altKey && !event.metaKey) {
            event.preventDefault();
            event.stopPropagation();
            setShare(Math.round((share + step) * 100) / 100);
        }
    });

    const pans = {ArrowLeft: [64, 0], ArrowRight: [-64, 0], ArrowUp: [0, 64], ArrowDown: [0, -64]};
    const keys = {
        "1": () => { zoomInMiddle(1 / devicePixelRatio); },
        "0": () => { zoom = null; layOut(); },
        "+": () => { zoomInMiddle(currentZoom() * 1.25); },
        "=": () => { zoomInMiddle(currentZoom() * 1.25); },
        "-": () => { zoomInMiddle(currentZoom() / 1.25); },
        " ": () => { showOriginal(true); },
    };

    document.addEventListener("keydown", (event) => {
        if (pictures === null || event.ctrlKey || event.metaKey || event.altKey || takesKey(event.target, event.key)) {
            return;
        }
        const isPan = event.shiftKey && event.key in pans && host.classList.contains("zoomed");
        if (isPan || event.key in keys) {
            event.preventDefault();
            if (isPan) {
                pan(...pans[event.key]);
            } else {
                keys[event.key]();
            }
        }
    });
    document.addEventListener("keyup", (event) => event.key === " " && showOriginal(false));
    window.addEventListener("blur", () => showOriginal(false));
    new ResizeObserver(layOut).observe(host);

    const makeImage = (name, {src, text}) => make("img", {class: name, alt: text, draggable: "false", decoding: "async", src});

    layOut();

    return {
        // Shows two pictures of one size, or nothing for null. The old ones stay until the new ones can be seen; of several
        // calls the last one counts. Resolves to false where a later call has overtaken this one.
        async show(next) {
            const call = ++latest;
            if (next === null) {
                pictures = images = null;
                sheet.replaceChildren();
                layOut();
                return true;
            }
            const reuse = (name) => images !== null && pictures[name].src === next[name].src ? images[name] : null;
            const made = {before: reuse("before") ?? makeImage("stage-before", next.before),
                after: reuse("after") ?? makeImage("stage-after", next.after)};
            // A picture that does not load leaves its text. With pictures switched off nothing ever settles.
            await Promise.race([Promise.allSettled([made.before.decode(), made.after.decode()]), pause(longestDecodeMs)]);
            if (call !== latest) {
                return false;
            }
            if (pictures === null || pictures.width !== next.width || pictures.height !== next.height) {
                zoom = null;
                centre = [0.5, 0.5];
            }
            pictures = next;
            images = made;
            made.before.alt = next.before.text;
            made.after.alt = next.after.text;
            leftTag.textContent = next.before.tag ?? "Before";
            rightTag.textContent = next.after.tag ?? "After";
            sheet.replaceChildren(made.before, made.after);
            layOut();
            return true;
        },
        // A thin line along the top, from 150 ms on.
        setBusy(isBusy) {
            clearTimeout(busyTimer);
            if (isBusy) {
                busyTimer = setTimeout(() => { busyLine.hidden = false; }, busyDelayMs);
            } else {
                busyLine.hidden = true;
            }
            host.setAttribute("aria-busy", isBusy);
        },
        // The picture is older than the parameters.
        setStale(isStale) { host.classList.toggle("stale", isStale); },
    };
}
