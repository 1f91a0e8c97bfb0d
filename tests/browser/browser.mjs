// SPDX-License-Identifier: Apache-2.0
// What the tests of all pages share: Debian's Chromium, a page that must not complain, and the check of accessibility.
import assert from "node:assert/strict";
import {mkdirSync, readFileSync} from "node:fs";
import {createRequire} from "node:module";
import {chromium} from "playwright-core";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

// Where screenshots go.
export const pictures = process.env.KORVANE_SCREENSHOTS;

export function launch() {
    return chromium.launch({executablePath: process.env.KORVANE_CHROMIUM ?? "/usr/bin/chromium"});
}

// A page and what went wrong in it: console messages, exceptions, requests that failed. With a test of node's, all of
// it must stay empty to its end.
export async function openPage(browser, test, {width = 1440, height = 900, theme = "light", ...options} = {}) {
    const context = await browser.newContext({viewport: {width, height}, colorScheme: theme, ...options});
    const page = await context.newPage();
    const complaints = [];
    page.on("console", (message) => complaints.push(message.text()));
    page.on("pageerror", (error) => complaints.push(`${error}`));
    page.on("requestfailed", (request) => complaints.push(`${request.url()}: ${request.failure()?.errorText}`));
    test.after(async () => {
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

export async function screenshot(page, name) {
    mkdirSync(pictures, {recursive: true});
    await page.screenshot({path: `${pictures}/${name}.png`});
}
