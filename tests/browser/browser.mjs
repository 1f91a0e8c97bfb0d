// SPDX-License-Identifier: Apache-2.0
// What the tests of all pages share: Debian's Chromium, a page that must not complain, and the check of accessibility.
import assert from "node:assert/strict";
import {mkdirSync, readFileSync} from "node:fs";
import {createRequire} from "node:module";
import {chromium} from "playwright-core";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

// Where screenshots go.
export const pictures = process.env.KORVANE_SCREENSHOTS;

export function launch(options = {}) {
    return chromium.launch({executablePath: process.env.KORVANE_CHROMIUM ?? "/usr/bin/chromium", ...options});
}

// A page and what went wrong in it: console messages, exceptions, requests that failed. All of it must stay empty to the
// end of the test, but for what is expected. Closing takes back what the page still asks, so that does not count.
export async function openPage(browser, test, {width = 1440, height = 900, theme = "light", expected = null, ...options} = {}) {
    const context = await browser.newContext({viewport: {width, height}, colorScheme: theme, ...options});
    context.setDefaultTimeout(60000);
    const page = await context.newPage();
    const found = [];
    const complain = (text) => expected?.test(text) || found.push(text);
    page.on("console", (message) => complain(message.text()));
    page.on("pageerror", (error) => complain(`${error}`));
    page.on("requestfailed", (request) => complain(`${request.url()}: ${request.failure()?.errorText}`));
    test.after(async () => {
        const complaints = [...found];
        await context.close();
        assert.deepEqual(complaints, []);
    });
    return page;
}

export async function checkAccessibility(page, what) {
    await page.evaluate(axe);
    const {violations} = await page.evaluate(() => window.axe.run(document));
    const found = violations.map(({id, nodes}) => `${id}: ${nodes.map((node) => node.target).join(", ")}`);
    assert.deepEqual(found, [], what);
}

// Nothing is wider than the screen.
export async function checkWidth(page, selectors, what) {
    const wide = await page.evaluate((all) => [document.documentElement, ...document.querySelectorAll(all)]
        .filter((element) => element.scrollWidth > element.clientWidth + 1).map((element) => element.className), selectors);
    assert.deepEqual(wide, [], `${what} is too wide`);
}

export async function screenshot(page, name) {
    mkdirSync(pictures, {recursive: true});
    await page.screenshot({path: `${pictures}/${name}.png`});
}
