// The comparison side of taskdata_bench: parses one TASKDATA.XML with the
// isoxml package and saves it again, then prints key=value lines that the
// benchmark reads: the package version, load and save seconds, the number of
// parse warnings, and the process's peak RSS.
//
// Usage: node isoxml_bench.mjs TASKDATA.XML OUTDIR
//
// The load reads the file and builds the package's entities from it. The
// package saves a set only as a ZIP archive (entries stored, not deflated),
// so the save builds the XML, packs it and writes OUTDIR/TASKDATA.zip.

import { readFileSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import isoxml from 'isoxml';

const [input, outDir] = process.argv.slice(2);
if (!input || !outDir) {
    console.error('usage: node isoxml_bench.mjs TASKDATA.XML OUTDIR');
    process.exit(2);
}

function secondsSince(start) {
    return Number(process.hrtime.bigint() - start) / 1e9;
}

const loadStart = process.hrtime.bigint();
const manager = new isoxml.ISOXMLManager();
await manager.parseISOXMLFile(readFileSync(input, 'utf8'), 'text/xml');
const loadSeconds = secondsSince(loadStart);

const saveStart = process.hrtime.bigint();
writeFileSync(join(outDir, 'TASKDATA.zip'), await manager.saveISOXML());
const saveSeconds = secondsSince(saveStart);

const { version } = createRequire(import.meta.url)('isoxml/package.json');
console.log(`version=${version}`);
console.log(`load_s=${loadSeconds}`);
console.log(`save_s=${saveSeconds}`);
console.log(`warnings=${manager.getWarnings().length}`);
// maxRSS is in KiB, as getrusage gives it.
console.log(`peak_rss_kb=${process.resourceUsage().maxRSS}`);
