// SPDX-License-Identifier: Apache-2.0
// The playground in a real browser, on a real server: what the page shows, copies and saves equals what the commands, the
// C++ and the Java calls make of the same file.
import assert from "node:assert/strict";
import {execFileSync, spawn} from "node:child_process";
import {mkdtempSync, readFileSync, rmSync, truncateSync, writeFileSync} from "node:fs";
import {tmpdir} from "node:os";
import {join} from "node:path";
import {createInterface} from "node:readline";
import {after, before, test} from "node:test";
import {checkAccessibility, checkWidth, launch, openPage, screenshot} from "./browser.mjs";

const build = process.env.KORVANE_BUILD;
const root = process.env.KORVANE_ROOT;
const environment = {...process.env, PATH: `${build}/tools:${process.env.PATH}`, LD_LIBRARY_PATH: build};
const folder = mkdtempSync(join(tmpdir(), "playground-"));
const inFolder = (name) => join(folder, name);
let browser;
let server;
const running = new Set();

// Resolves to {url, stop}.
async function serve(...options) {
    const child = spawn(`${build}/tools/korvane`, ["serve", ...options], {stdio: ["ignore", "pipe", "inherit"]});
    const ended = new Promise((resolve) => { child.once("exit", resolve); });
    const stop = () => { child.kill(); return ended; };
    running.add(stop);
    const url = await new Promise((resolve, reject) => {
        createInterface(child.stdout).once("line", resolve);
        ended.then((code) => reject(new Error(`korvane serve ended with ${code}`)));
    });
    return {url, stop};
}

function shell(line, options = {}) {
    return execFileSync("bash", ["-ec", line], {cwd: folder, env: environment, maxBuffer: 1 << 26, ...options});
}

before(async () => {
    // A number of pixels that eight divides: the last few of others keep their colour when Java dims them.
    shell("korvane scene photo.jpg --size 480x320");
    server = await serve();
    browser = await launch();
});

// All servers, since a test that fails does not come to stop its own, and node waits for every child.
after(async () => {
    await Promise.all([browser?.close(), ...Array.from(running, (stop) => stop())]);
    rmSync(folder, {recursive: true});
});

async function openPhoto(page, name = "photo.jpg") {
    await page.locator("#file").setInputFiles(inFolder(name));
    await page.locator(".stage:not(.stale)[aria-busy=false] .stage-before").waitFor();
}

const choose = (page, effect) => page.locator(`[data-effect=${effect}]`).click();

// The picture of these values in the photo's full size, as base64 of RGBA bytes.
async function settledPixels(page, text) {
    const image = page.locator(`.stage:not(.stale)[aria-busy=false] .stage-after[alt*="${text}"]`);
    await image.waitFor();
    await page.waitForFunction((known) => {
        const image = document.querySelector(".stage-after");
        return image.alt.includes(known) && image.naturalWidth >= 480 && !document.querySelector(".stage").matches(".stale");
    }, text);
    return pixelsOf(page, null);
}

// Of a file, or of what the stage shows.
async function pixelsOf(page, file, shown = ".stage-after") {
    const bytes = file === null ? null : readFileSync(inFolder(file)).toString("base64");
    return page.evaluate(async ([data, selector]) => {
        const image = data === null ? document.querySelector(selector) : new Image();
        if (data !== null) {
            image.src = `data:image/png;base64,${data}`;
        }
        await image.decode();
        const canvas = new OffscreenCanvas(image.naturalWidth, image.naturalHeight);
        const context = canvas.getContext("2d");
        context.drawImage(image, 0, 0);
        const {data: pixels} = context.getImageData(0, 0, canvas.width, canvas.height);
        let text = "";
        for (let at = 0; at < pixels.length; at += 8192) {
            text += String.fromCharCode(...pixels.subarray(at, at + 8192));
        }
        return btoa(text);
    }, [bytes, shown]);
}

// How many bytes differ.
function difference(one, other) {
    const [a, b] = [one, other].map((text) => Buffer.from(text, "base64"));
    assert.equal(a.length, b.length);
    return a.reduce((count, byte, at) => count + (byte !== b[at] ? 1 : 0), 0);
}

// What the page hands to the clipboard.
async function copied(page, button) {
    await page.evaluate(() => {
        window.copied = "";
        navigator.clipboard.writeText = async (text) => { window.copied = text; };
    });
    await page.locator(button).click();
    return (await page.waitForFunction(() => window.copied)).jsonValue();
}

test("sliders by mouse and keys give the pixels of the commands", async (t) => {
    const page = await openPage(browser, t);
    await page.goto(server.url);
    await openPhoto(page);
    await page.selectOption("#format", "png");
    const unchanged = await pixelsOf(page, null, ".stage-before");
    for (const [effect, name, field, command] of [
        ["filter-Distorted", "strength", "mStrength", (value) => `korvane filter Distorted photo.jpg --set mStrength=${value}`],
        ["blur-stack", "radius", "radius", (value) => `korvane blur photo.jpg --radius ${value}`]]) {
        await choose(page, effect);
        const slider = page.locator(`#p-${field}-slider`);
        const value = () => page.locator(`#p-${field}`).inputValue();
        const initial = await value();
        const box = await slider.boundingBox();
        const y = box.y + box.height / 2;
        await page.mouse.move(box.x + box.width * 0.5, y);
        await page.mouse.down();
        await page.mouse.move(box.x + box.width * 0.6, y, {steps: 4});
        await page.mouse.up();
        const dragged = await value();
        assert.notEqual(dragged, initial);
        await page.keyboard.press("ArrowRight");
        const stepped = await value();
        assert.notEqual(stepped, dragged);
        const pixels = await settledPixels(page, `${name} ${stepped}`);
        shell(`${command(stepped)} -o expected.png`);
        assert.equal(difference(pixels, await pixelsOf(page, "expected.png")), 0, `${effect} ${stepped}`);
        assert.ok(difference(pixels, unchanged) > 1000);
        assert.match(await page.locator("#timing").textContent(), /^Made in \d+ ms: wait \d+, copy \d+, upload \d+, draw \d+, read \d+, encode \d+$/);
        await page.locator(".parameter:has(.reset:visible)").getByRole("button", {name: "Reset"}).click();
        assert.equal(await value(), initial);
    }
});

test("a chain is the same as a command, as C++, as Java, as a link and as a file", async (t) => {
    const page = await openPage(browser, t, {acceptDownloads: true});
    await page.goto(server.url);
    await openPhoto(page);
    await choose(page, "filter-Distorted");
    await page.locator("#p-mStrength").fill("3");
    await page.locator("#add").click();
    await choose(page, "blur-stack");
    await page.locator("#p-radius").fill("7");
    await page.locator("#p-color").fill("#102040");
    await page.locator("#p-alpha").fill("64");
    assert.match(await page.locator("#behaviours summary").textContent(), /^Known behaviours \([1-9]\)$/);
    await page.selectOption("#format", "png");
    const pixels = await settledPixels(page, "alpha 64");
    const input = Buffer.from(await pixelsOf(page, null, ".stage-before"), "base64");

    const command = await copied(page, "#copy");
    assert.match(command, /^korvane filter Distorted photo\.jpg .*\|\n.*korvane blur - --method stack -o photo-filter-Distorted-blur-stack\.png/);
    shell(command);
    const made = "photo-filter-Distorted-blur-stack.png";
    assert.equal(difference(pixels, await pixelsOf(page, made)), 0, command);
    for (const format of ["png", "jpg"]) {
        await page.selectOption("#format", format);
        const [download] = await Promise.all([page.waitForEvent("download"), page.locator("#save").click()]);
        assert.equal(download.suggestedFilename(), made.replace("png", format));
        await download.saveAs(inFolder("saved"));
        shell(command.replaceAll(".png", `.${format}`));
        assert.ok(readFileSync(inFolder("saved")).equals(readFileSync(inFolder(made.replace("png", format)))), format);
    }

    // The code, in a program that reads and writes RGBA bytes.
    const split = (code, head) => code.split("\n").reduce(([heads, lines], line) =>
        head.test(line) ? [`${heads}${line}\n`, lines] : [heads, `${lines}${line}\n`], ["", ""]);
    await page.getByRole("tab", {name: "C++"}).click();
    const [includes, cpp] = split(await copied(page, "#copy"), /^#include/);
    writeFileSync(inFolder("pasted.cpp"), `${includes}#include <cstdio>\n#include <vector>\nint main() {\n` +
        "    int width = 480, height = 320;\n    std::vector<unsigned char> bytes(480 * 320 * 4);\n" +
        "    unsigned char* rgba = bytes.data();\n    if (fread(rgba, 1, bytes.size(), stdin) != bytes.size()) return 1;\n" +
        `${cpp}    return fwrite(rgba, 1, bytes.size(), stdout) != bytes.size();\n}\n`);
    await page.getByRole("tab", {name: "Java"}).click();
    const [imports, java] = split(await copied(page, "#copy"), /^import/);
    writeFileSync(inFolder("Pasted.java"), `import android.graphics.Bitmap;\nimport java.nio.ByteBuffer;\n${imports}` +
        "class Pasted {\n    public static void main(String[] none) throws Exception {\n" +
        "        Bitmap bitmap = Bitmap.createBitmap(480, 320);\n" +
        "        bitmap.copyPixelsFromBuffer(ByteBuffer.wrap(System.in.readAllBytes()));\n" +
        `${java}        ByteBuffer pixels = ByteBuffer.allocate(480 * 320 * 4);\n        bitmap.copyPixelsToBuffer(pixels);\n` +
        "        System.out.write(pixels.array());\n        System.out.flush();\n    }\n}\n");
    const jars = `${build}/java/korvane.jar:${build}/java/korvane_standins.jar`;
    shell(`clang++ -std=c++20 -Wall -Werror -I'${root}' -I'${build}/generated' pasted.cpp -o pasted -L'${build}' -lkorvane`);
    for (const run of ["./pasted", `java -Djava.library.path='${build}' -cp '${jars}' Pasted.java`]) {
        const output = shell(`xvfb-run -a -s -noreset ${run}`, {input, stdio: ["pipe", "pipe", "ignore"]});
        assert.equal(difference(pixels, output.toString("base64")), 0, run);
    }

    const link = await copied(page, "#link");
    const other = await openPage(browser, t);
    await other.goto(link);
    await openPhoto(other);
    assert.equal(difference(pixels, await settledPixels(other, "alpha 64")), 0);
});

test("what is no photo, or too large, gets a sentence and loses nothing", async (t) => {
    const page = await openPage(browser, t, {expected: /status of 422/});
    await page.goto(server.url);
    await openPhoto(page);
    writeFileSync(inFolder("notes.jpg"), "no photo at all");
    writeFileSync(inFolder("huge.jpg"), "");
    truncateSync(inFolder("huge.jpg"), 64 * 1024 * 1024 + 1);
    for (const [name, sentence] of [["notes.jpg", /^[^.]+\. Choose another photo\.$/], ["huge.jpg", /larger than 64 MB/]]) {
        await page.locator("#file").setInputFiles(inFolder(name));
        await page.locator("#error:visible").getByText(sentence).waitFor();
    }
    assert.match(await page.locator("#facts").textContent(), /^photo\.jpg, 480 × 320/);
    await choose(page, "filter-Xray");
    await settledPixels(page, "Xray");
});

test("a server that was started anew gets the chain", async (t) => {
    // A server that ends refuses what it has not begun, and a page that leaves takes back what it has asked.
    const page = await openPage(browser, t, {expected: /net::ERR_|status of (403|503)/});
    const first = await serve();
    await page.goto(first.url);
    await openPhoto(page);
    await choose(page, "filter-Mirror");
    await settledPixels(page, "Mirror");
    await first.stop();
    await page.locator("#p-mMirrorX, .parameter input[type=number]").first().fill("0.3");
    await page.locator("#gone").getByText("does not answer").waitFor();
    const code = await page.locator("#code").textContent();
    const second = await serve("--port", new URL(first.url).port);
    await page.locator("#gone").getByText("started anew").waitFor();
    await page.locator("#new-link").fill("http://elsewhere.example/");
    await page.locator("#go").click();
    await page.locator("#error").getByText("not the link").waitFor();
    await screenshot(page, "playground-gone");
    await page.locator("#new-link").fill(second.url);
    await page.keyboard.press("Enter");
    await page.waitForURL((url) => url.href.startsWith(second.url));
    await openPhoto(page);
    assert.equal(await page.locator("#code").textContent(), code);
    const pixels = await settledPixels(page, "0.3");
    await page.selectOption("#format", "png");
    shell((await copied(page, "#copy")).replace(/-o \S+/, "-o expected.png"));
    assert.equal(difference(pixels, await pixelsOf(page, "expected.png")), 0);
});

for (const [name, width, height, theme, options] of [["light", 1440, 900, "light", {}], ["dark", 1440, 900, "dark", {}],
    ["phone", 390, 844, "light", {hasTouch: true}], ["narrow", 320, 640, "dark", {}], ["large-text", 1440, 900, "light", {}]]) {
    // The others are about their layout only.
    const isWhole = !["narrow", "large-text"].includes(name);
    test(`looks right and can be reached by all: ${name}`, async (t) => {
        const page = await openPage(browser, t, {width, height, theme, ...options});
        await page.goto(server.url);
        if (name === "large-text") {
            await page.evaluate(() => { document.documentElement.style.fontSize = "200%"; });
        }
        await page.locator(".rail-item").first().waitFor();
        await screenshot(page, `playground-${name}-empty`);
        if (isWhole) {
            await page.locator("[data-sample=portrait]").click();
        } else {
            await openPhoto(page);
        }
        await choose(page, "filter-Distorted");
        await settledPixels(page, "Distorted");
        if (isWhole) {
            await page.locator("#thumb-corners:visible").waitFor();
        }
        if (options.hasTouch) {
            const box = await page.locator(".stage-sheet").boundingBox();
            await page.touchscreen.tap(box.x + box.width * 0.25, box.y + box.height / 2);
            assert.equal(await page.locator(".stage-divider").getAttribute("aria-valuenow"), "25");
        }
        await checkWidth(page, ".inspector, .bar, .stage", name);
        if (isWhole) {
            await checkAccessibility(page, name);
        }
        await screenshot(page, `playground-${name}`);
    });
}
