// SPDX-License-Identifier: Apache-2.0
// Reads the page's data: texts, elements and views as objects. Texts of the files only ever become text nodes.
"use strict";

const data = JSON.parse(document.getElementById("data").textContent);
const byId = (id) => document.getElementById(id);
const text = (number) => data.texts[number];

// Bits of the numbers in which the data keep states.
const OFF = 1, BYPASSED = 2, OUTPUT = 2, FEEDBACK = 2, MISSING = 4;
const [PADDING, NAME, LINE] = data.heights;
const MARGIN = 6;
const ZOOM_STEP = 1.25, LEAST_ZOOM = 0.02, MOST_ZOOM = 6, LARGEST_FIT = 1.25;

const KINDS = {
    source: "source", input: "source", sink: "sink", output: "sink", hw: "hw", mux: "hw", demux: "hw", split: "hw",
    program_group: "group", compute_block: "group", kernel: "group", missing: "missing",
};
const kindClass = (kind) => "kind-" + (Object.hasOwn(KINDS, kind) ? KINDS[kind] : "other");
const ROUTING = new Set(["mux", "demux", "split"]);
const HAS_OWN_BOX = new Set(["input", "output", "sink", "source", "outside"]);

const readPort = (raw) => ({
    item: raw[0], name: text(raw[1]), lines: raw[2].map(text), off: (raw[3] & OFF) !== 0, output: (raw[3] & OUTPUT) !== 0,
    inputs: raw[4],
});
const readNode = (raw, area) => ({
    item: raw[0], name: text(raw[1]), kind: text(raw[2]), off: (raw[3] & OFF) !== 0, bypassed: (raw[3] & BYPASSED) !== 0,
    lines: raw[4].map(text), alarm: raw[5] < 0 ? "" : text(raw[5]), cluster: raw[6], ports: raw.slice(7).map(readPort),
    x: area[0], y: area[1], width: area[2], height: area[3], split: area[4], row: area[5],
    path: raw[0] < 0 ? text(raw[1]) : text(data.items[raw[0]][0]),
});
const readEdge = (raw, curve, labels) => ({
    from: raw[0], fromPort: raw[1], to: raw[2], toPort: raw[3], off: (raw[4] & OFF) !== 0,
    feedback: (raw[4] & FEEDBACK) !== 0, missing: (raw[4] & MISSING) !== 0, curve,
    label: raw.length > 5 ? text(raw[5]) : "", labelAt: raw.length > 5 ? labels.shift() : null,
});

const viewCache = new Map();
function readView(raw) {
    const known = raw[1] + "/" + raw[2];
    if (!viewCache.has(known)) {
        const content = data.contents[raw[1]], layout = data.layouts[raw[2]], labels = [...layout.labels];
        viewCache.set(known, {
            stream: raw[0], name: raw[0] === null ? "whole graph" : "inside of stream " + raw[0], size: layout.size,
            clusters: content.clusters.map((name, i) => ({name: text(name), area: layout.clusters[i]})),
            nodes: content.nodes.map((node, i) => readNode(node, layout.nodes[i])),
            edges: content.edges.map((edge, i) => readEdge(edge, layout.edges[i], labels)),
        });
    }
    return viewCache.get(known);
}

function readItem(number) {
    const raw = data.items[number];
    return {path: text(raw[0]), kind: text(raw[1]), place: placeText(raw, 3), attributes: data.sets[raw[2]].map((a) => {
        const entry = data.attributes[a];
        return {name: text(entry[0]), value: text(entry[1]), place: placeText(entry, 2)};
    })};
}
// Nothing for what stands in no file.
const placeText = (raw, at) => raw.length > at ? text(raw[at]) + ":" + raw[at + 1] + ":" + raw[at + 2] : "";
const withoutDirectory = (place) => place.slice(place.lastIndexOf("/") + 1);
const areFileNamesUnique = new Set(data.files.map((file) => withoutDirectory(text(file)))).size === data.files.length;
const shortPlace = (place) => areFileNamesUnique ? withoutDirectory(place) : place;
