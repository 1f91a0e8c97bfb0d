// SPDX-License-Identifier: Apache-2.0
// The gallery in a real browser.
import assert from "node:assert/strict";
import {execFileSync} from "node:child_process";
import {copyFileSync, mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, statSync} from "node:fs";
import {tmpdir} from "node:os";
import {join} from "node:path";
import {after, before, test} from "node:test";
import {pathToFileURL} from "node:url";
import {checkAccessibility, checkWidth, launch, openPage, screenshot} from "./browser.mjs";

const folder = process.env.KORVANE_GALLERY;
const address = (hash) => `${pathToFileURL(join(folder, "index.html"))}#/${hash}`;
let browser;

before(async () => { browser = await launch(); });
after(() => browser.close());

const dataOf = (page) => page.evaluate(() => JSON.parse(document.getElementById("data").textContent));
const share = async (page) => Number(await page.locator(".stage-divider").getAttribute("aria-valuenow"));

// Both pictures of the stage are there and have been decoded.
async function stageShows(page, effect, picture) {
    await page.waitForFunction(([before, after]) => {
        const images = [...document.querySelectorAll(".stage-sheet img")];
        return images.length === 2 && images.every((image) => image.complete && image.naturalWidth > 0) &&
            images[0].src.endsWith(before) && images[1].src.endsWith(after);
    }, [effect.before, effect.pictures[picture].src]);
}

test("every effect has its place, and every picture loads in its size", async (t) => {
    const page = await openPage(browser, t);
    await page.goto(address(""));
    const {effects} = await dataOf(page);
    const groups = new Set(effects.map((effect) => effect.group));
    assert.deepEqual([...groups], ["Blur", "Filters", "Colour", "Capture", "Stamp", "Analysis"]);
    assert.equal(effects.length, 21);
    for (const effect of effects) {
        await page.locator(`.rail-item[data-id="${effect.id}"]`).click();
        await page.locator(".inspector .name").getByText(effect.name, {exact: true}).waitFor();
        if (effect.film === undefined) {
            await stageShows(page, effect, 0);
        }
    }
    const wrong = await page.evaluate(async (all) => {
        const sizes = await Promise.all(all.map(async ([src, width, height]) => {
            const image = new Image();
            image.src = src;
            await image.decode().catch(() => null);
            return image.naturalWidth === width && image.naturalHeight === height ? null : src;
        }));
        return sizes.filter((src) => src !== null);
    }, effects.flatMap(({before, pictures, width, height}) => [before, ...pictures.map(({src}) => src)].map((src) => [src, width, height])));
    assert.deepEqual(wrong, []);
});

test("the divider moves by mouse, tap and keys, and uncovers what it should", async (t) => {
    const page = await openPage(browser, t);
    await page.goto(address("xray"));
    await page.locator(".stage-after").waitFor();
    const box = await page.locator(".stage-sheet").boundingBox();
    const at = (part) => [box.x + part * box.width, box.y + box.height / 2];
    assert.equal(await share(page), 50);
    await page.mouse.move(...at(0.5));
    await page.mouse.down();
    await page.mouse.move(...at(0.2), {steps: 5});
    await page.mouse.up();
    assert.equal(await share(page), 20);
    await page.mouse.click(...at(0.8));
    assert.equal(await share(page), 80);
    const looks = new Map();
    await page.locator(".stage-divider").focus();
    for (const [key, value] of [["ArrowRight", 81], ["ArrowDown", 80], ["PageDown", 70], ["Home", 0], ["End", 100]]) {
        await page.keyboard.press(key);
        assert.equal(await share(page), value, key);
        const half = {x: box.x + 40, y: box.y + 80, width: box.width - 80, height: box.height - 160};
        looks.set(key, (await page.screenshot({clip: half})).toString("base64"));
    }
    assert.notEqual(looks.get("Home"), looks.get("End"));
    await page.mouse.dblclick(...at(0.3));
    assert.equal(await share(page), 50);
});

test("strips and code follow the keyboard", async (t) => {
    const page = await openPage(browser, t);
    await page.goto(address("distorted"));
    const effect = (await dataOf(page)).effects.find(({id}) => id === "distorted");
    await page.locator("input[data-parameter=mStrength]:checked").focus();
    await page.keyboard.press("ArrowRight");
    await page.waitForURL(/#\/distorted\/mStrength=10$/);
    const picture = effect.parameters.find(({name}) => name === "mStrength").values.find(({value}) => value === "10").picture;
    await stageShows(page, effect, picture);
    assert.equal(await page.evaluate(() => document.activeElement.value), "10");
    const code = page.locator(".code code");
    assert.match(await code.textContent(), /^korvane filter ImageFilterDistorted house\.png --set mStrength=10 -o /);
    for (const [tab, pattern] of [["C++", /float mStrength = 10\.0f;/], ["Java", /filter\.set\("mStrength", 10\.0f\);/]]) {
        await page.getByRole("tab", {name: tab, exact: true}).click();
        assert.match(await code.textContent(), pattern);
    }
    await page.evaluate(() => { navigator.clipboard.writeText = async (text) => { window.copied = text; }; });
    await page.getByRole("button", {name: "Copy"}).click();
    assert.equal(await page.evaluate(() => window.copied), effect.pictures[picture].java);
    await page.keyboard.press("?");
    assert.ok(await page.locator("#keys").isVisible());
});

test("a shown command makes its picture, byte for byte", async (t) => {
    const page = await openPage(browser, t);
    await page.goto(address(""));
    const {effects} = await dataOf(page);
    const place = mkdtempSync(join(tmpdir(), "gallery-"));
    t.after(() => rmSync(place, {recursive: true}));
    mkdirSync(join(place, "pictures"));
    for (const source of ["house.png", "portrait.png"]) {
        copyFileSync(join(folder, source), join(place, source));
    }
    for (const id of ["extrusion", "box-blur", "palette"]) {
        const {command, src} = effects.find((effect) => effect.id === id).pictures.at(-1);
        execFileSync("bash", ["-c", command],
            {cwd: place, env: {...process.env, PATH: `${process.env.KORVANE_BUILD}/tools:${process.env.PATH}`}});
        // A picture equal to an earlier one is stored once, under the earlier name.
        const made = join(place, command.match(/-o (\S+)/)[1]);
        assert.ok(readFileSync(made).equals(readFileSync(join(folder, src))), command);
    }
});

test("the page stays small and does not shift", async (t) => {
    const files = readdirSync(join(folder, "pictures")).map((name) => join(folder, "pictures", name));
    const bytes = [...files, join(folder, "index.html")].reduce((sum, file) => sum + statSync(file).size, 0);
    assert.ok(bytes < 6e6, `${bytes} bytes`);
    const page = await openPage(browser, t);
    await page.addInitScript(() => {
        window.shifts = [];
        new PerformanceObserver((list) => window.shifts.push(...list.getEntries().map((entry) => entry.value)))
            .observe({type: "layout-shift", buffered: true});
    });
    await page.goto(address("timetunnel"));
    await page.locator(".stage-after").waitFor();
    await page.waitForTimeout(300);
    assert.ok((await page.evaluate(() => window.shifts)).every((value) => value < 0.001));
});

for (const [name, width, height, theme] of [["light", 1440, 900, "light"], ["dark", 1440, 900, "dark"],
    ["phone", 390, 844, "light"], ["narrow", 320, 640, "dark"], ["large", 3840, 2160, "light"]]) {
    test(`looks right and can be reached by all: ${name}`, async (t) => {
        const page = await openPage(browser, t, {width, height, theme, reducedMotion: name === "dark" ? "reduce" : "no-preference"});
        for (const id of ["distorted", "stack-blur", "panorama-sweep", "palette", "speed"]) {
            await page.goto(address(id));
            await page.waitForTimeout(250);
            await checkWidth(page, ".film, .speed, .inspector", id);
            await checkAccessibility(page, id);
            await screenshot(page, `gallery-${name}-${id}`);
        }
        const background = await page.evaluate(() => getComputedStyle(document.body).backgroundColor);
        assert.equal(background, theme === "dark" ? "rgb(20, 20, 20)" : "rgb(246, 246, 244)");
    });
}
