// The same tags, parsed and resolved by @dailymotion/vast-client:
//
//   node resolving.mjs MODULES DOCUMENTS SECONDS
//   node resolving.mjs MODULES DOCUMENTS --show
//
// MODULES is the node_modules folder with the package, DOCUMENTS the folder of documents. Prints documents a second of
// processor time, for each tag; with --show, what the tags lead to, in the lines of vast_bench.
import { readFileSync, readdirSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join, resolve } from 'node:path';

const [, , modules, folder, mode] = process.argv;
const require = createRequire(join(resolve(modules), 'any.js'));
const { VASTClient } = require('@dailymotion/vast-client');
const { DOMParser } = require('@xmldom/xmldom');

const Site = 'http://ads.example/';
const Tags = ['small', 'inline', 'pod', 'chain'];
const texts = new Map(readdirSync(folder).map((name) => [Site + name, readFileSync(join(folder, name), 'utf8')]));

// The package's own handler for node parses with xmldom, too.
let documents = 0;
const urlHandler = {
    async get(address) {
        ++documents;
        return { xml: new DOMParser().parseFromString(texts.get(address), 'text/xml') };
    },
};
const client = new VASTClient();
const resolveTag = (tag) => client.get(`${Site}${tag}.xml`, { urlHandler });

// In processor time, as the other program measures: other programs may use the cores too.
async function documentsASecond(tag, seconds) {
    documents = 0;
    let used = 0;
    const start = process.cpuUsage();
    while (used < seconds * 1e6) {
        for (let i = 0; i < 20; ++i)
            await resolveTag(tag);
        const { user, system } = process.cpuUsage(start);
        used = user + system;
    }
    return Math.round((documents * 1e6) / used);
}

function show(tag, ad) {
    const line = (what, value) => console.log(`${tag} ${ad.id} ${what} ${value}`);
    const all = (what, values) => (values ?? []).forEach((value) => line(what, value));
    line('sequence', ad.sequence ?? '-');
    line('title', ad.title);
    ad.impressionURLTemplates.forEach(({ url }) => line('impression', url));
    all('error', ad.errorURLTemplates);
    for (const each of ad.viewableImpression) {
        all('viewable', each.viewable);
        all('notViewable', each.notViewable);
        all('viewUndetermined', each.viewUndetermined);
    }
    for (const { trackingEvents } of ad.adVerifications)
        all('verificationNotExecuted', trackingEvents.verificationNotExecuted);
    for (const creative of ad.creatives) {
        if (creative.type === 'companion') {
            for (const each of creative.variations) {
                line('companion', `${each.id} ${each.staticResources[0].url}`);
                each.companionClickTrackingURLTemplates.forEach(({ url }) => line('companionClickTracking', url));
                all('companionView', each.trackingEvents.creativeView);
            }
            continue;
        }
        for (const [event, addresses] of Object.entries(creative.trackingEvents))
            all('tracker', addresses.map((address) => `${event.replace(/^progress-.*/, 'progress')} ${address}`));
        creative.mediaFiles.forEach((file) =>
            line('file', `${file.width}x${file.height} ${file.mimeType} ${file.fileURL}`));
        line('clickThrough', creative.videoClickThroughURLTemplate.url);
        creative.videoClickTrackingURLTemplates.forEach(({ url }) => line('clickTracking', url));
        creative.videoCustomClickURLTemplates.forEach(({ url }) => line('customClick', url));
        for (const icon of creative.icons) {
            line('icon', `${icon.program} ${icon.staticResource}`);
            icon.iconClickTrackingURLTemplates.forEach(({ url }) => line('iconClickTracking', url));
            line('iconView', icon.iconViewTrackingURLTemplate);
        }
    }
}

if (mode === '--show') {
    for (const tag of Tags)
        (await resolveTag(tag)).ads.forEach((ad) => show(tag, ad));
} else {
    const seconds = Number(mode);
    const figures = {};
    for (const tag of Tags) {
        await documentsASecond(tag, seconds); // compiled and optimised from here on
        figures[tag] = await documentsASecond(tag, seconds);
    }
    console.log(JSON.stringify(figures));
}
