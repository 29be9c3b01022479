// The same expansion by @dailymotion/vast-client:
//
//   node macros.mjs UTIL ADDRESSES SECONDS
//   node macros.mjs UTIL ADDRESSES --show
//
// UTIL is the package's src/util/util.js as a module. Prints addresses a second of processor time, as its tracker expands them (one list
// per event) and all in one list; with --show, the expanded addresses.
import { readFileSync } from 'node:fs';
import { pathToFileURL } from 'node:url';

const [, , utilFile, addressFile, mode] = process.argv;
const { util } = await import(pathToFileURL(utilFile));
const addresses = readFileSync(addressFile, 'utf8').trimEnd().split('\n');

// As typical_values() in macros_bench.cpp.
const values = {
    ASSETURI: 'https://cdn.example/creatives/2342/720p/main.mp4',
    ADPLAYHEAD: '00:00:11.250',
    UNIVERSALADID: 'ad-id.example CNPA0484000H',
    PODSEQUENCE: 2,
    ADTYPE: 'video',
    ADSERVINGID: 'ads.example-47ed3bac-1768-4b9a-9d0e-0b92422ab066',
};

// The expansion encodes the object that it is given, so each call needs a copy, as its tracker makes one.
const expand = (list) => util.resolveURLTemplates(list, { ...values });
const lists = addresses.map((address) => [address]);

// In processor time, as the other program measures: other programs may use the cores too.
function addressesASecond(work, seconds) {
    let done = 0;
    let used = 0;
    const start = process.cpuUsage();
    while (used < seconds * 1e6) {
        for (let i = 0; i < 100; ++i)
            done += work();
        const { user, system } = process.cpuUsage(start);
        used = user + system;
    }
    return Math.round((done * 1e6) / used);
}

function eachAlone() {
    let length = 0;
    for (const list of lists)
        length += expand(list).length;
    return length;
}

function allInOneList() {
    return expand(addresses).length;
}

if (mode === '--show') {
    console.log(expand(addresses).join('\n'));
} else {
    const seconds = Number(mode);
    for (const work of [eachAlone, allInOneList])
        addressesASecond(work, seconds); // compiled and optimised from here on
    console.log(JSON.stringify({
        each_alone: addressesASecond(eachAlone, seconds),
        one_list: addressesASecond(allInOneList, seconds),
    }));
}
