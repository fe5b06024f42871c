// Shows the pages of an OFD file in a browser with an independent reader (ofd.js) and takes a picture
// of each.
//
//   node show_ofd.cjs MODULES BROWSER FILE.ofd OUT_PREFIX     makes OUT_PREFIX-1.png ...
//
// Prints one line a page: its size as the reader sees it, its images and its text. Ends with status 1
// when the reader fails, when a page is empty, or after a minute.
'use strict';
const fs = require('fs');
const path = require('path');

const [modules, browserPath, ofdFile, prefix] = process.argv.slice(2);
const { chromium } = require(path.join(modules, 'playwright-core'));
const kWidth = 900;

// Runs in the browser.
async function render({ base64, width }) {
  const bytes = Uint8Array.from(atob(base64), (c) => c.charCodeAt(0));
  const document_ = await new Promise((resolve, reject) => {
    window.ofd.parseOfdDocument({
      ofd: new File([bytes], 'page.ofd'),
      success: (result) => resolve(result[0]),
      fail: (error) => reject(new Error(String(error))),
    });
  });
  const pages = window.ofd.renderOfd(width, document_);
  return pages.map((page) => {
    document.body.appendChild(page);
    return {
      width: page.clientWidth,
      height: page.clientHeight,
      images: page.querySelectorAll('img, image').length,
      text: page.textContent.replace(/\s+/g, ' ').trim(),
    };
  });
}

async function main() {
  const browser = await chromium.launch({ executablePath: browserPath, args: ['--no-sandbox'] });
  try {
    const tab = await browser.newPage({ viewport: { width: kWidth + 40, height: 1300 } });
    await tab.setContent('<!DOCTYPE html><meta charset="utf-8"><body style="margin:0"></body>');
    await tab.addScriptTag({ path: path.join(modules, 'ofd.js', 'lib', 'ofd.umd.min.js') });
    const base64 = fs.readFileSync(ofdFile).toString('base64');
    const pages = await tab.evaluate(render, { base64, width: kWidth });
    await tab.waitForTimeout(500); // pictures are decoded after they were put in
    const elements = await tab.$$('body > div');
    for (let i = 0; i < pages.length; ++i) {
      await elements[i].screenshot({ path: `${prefix}-${i + 1}.png` });
      const { width, height, images, text } = pages[i];
      console.log(`page ${i + 1}: ${width} x ${height}, ${images} images, text: ${text.slice(0, 60)}`);
    }
    if (pages.length === 0 || pages.some((page) => page.images === 0)) {
      throw new Error('a page without its picture');
    }
  } finally {
    await browser.close();
  }
}

setTimeout(() => {
  console.error('no answer within a minute');
  process.exit(1);
}, 60000).unref();
main().catch((error) => {
  console.error(error.message);
  process.exit(1);
});
