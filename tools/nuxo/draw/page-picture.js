// SPDX-License-Identifier: Apache-2.0
// Draws a view, moves and zooms it.

// ---- what is shown

const state = {setting: 0, view: 0, chosen: "", search: "", path: "", hit: -1};
let views = [];    // of the setting
let shown = null;  // the view
let elements = []; // of its nodes: {group, ports}, and of its edges
let edgeElements = [];
let matches = [];
const camera = {x: 0, y: 0, zoom: 1};

// ---- small helpers for elements

function svg(name, attributes = {}, content = null) {
    const element = document.createElementNS("http://www.w3.org/2000/svg", name);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    if (content !== null) element.textContent = content;
    return element;
}
function html(name, content = null, className = "") {
    const element = document.createElement(name);
    if (content !== null) element.textContent = content;
    if (className) element.className = className;
    return element;
}
function button(label, action) {
    const element = html("button", label, "go");
    element.type = "button";
    element.addEventListener("click", action);
    return element;
}
const option = (label, value) => new Option(label, value);

// ---- drawing

// A text and the width that it may take.
function label(group, content, className, x, y, width) {
    if (!content) return;
    const element = svg("text", {class: className, x, y}, content);
    element.dataset.width = width;
    group.append(element);
}

function shapeOf(node, className) {
    if (!ROUTING.has(node.kind)) {
        const round = node.kind === "input" || node.kind === "output" ? Math.min(node.height / 2, 16) : 4;
        return svg("rect", {class: className, width: node.width, height: node.height, rx: round});
    }
    const {width: w, height: h} = node, cut = Math.min(12, h / 2);
    return svg("path", {class: className, d: `M${cut} 0H${w - cut}L${w} ${h / 2}L${w - cut} ${h}H${cut}L0 ${h / 2}Z`});
}

const headHeight = (node) => 2 * PADDING + NAME + (node.lines.length + (node.alarm ? 1 : 0)) * LINE;

function drawHead(group, node) {
    const height = headHeight(node);
    if (node.ports.length === 0) {
        const body = shapeOf(node, "body");
        const head = shapeOf(node, "head " + kindClass(node.kind));
        group.append(head, body);
        body.classList.add("frame");
    } else {
        group.append(shapeOf(node, "body"));
        const d = `M1 ${height}V5a4 4 0 0 1 4 -4H${node.width - 5}a4 4 0 0 1 4 4V${height}Z`;
        group.append(svg("path", {class: "head " + kindClass(node.kind), d}));
    }
    const middle = node.width / 2, room = node.width - 2 * MARGIN;
    let y = PADDING + NAME - 4;
    label(group, node.name, "name", middle, y, room);
    for (const line of node.lines) label(group, line, "line", middle, y += LINE, room);
    label(group, node.alarm, "alarm", middle, y + LINE, room);
}

function drawPort(node, port, row) {
    const x = port.output ? node.split : 0;
    const width = port.output ? node.width - node.split : node.split;
    const y = headHeight(node) + row * node.row;
    const group = svg("g", {class: "port" + (port.output ? " output" : "") + (port.off ? " off" : "")});
    group.append(svg("rect", {x: x + 2, y: y + 1, width: Math.max(width - 4, 1), height: node.row - 3, rx: 2}));
    const at = port.output ? x + width - MARGIN : x + MARGIN;
    const room = width - 2 * MARGIN;
    const top = y + (node.row - port.lines.length * (LINE - 1)) / 2 + 3;
    label(group, port.name, "name", at, top, room);
    port.lines.forEach((line, i) => label(group, line, "details", at, top + (i + 1) * (LINE - 1), room));
    group.append(svg("title", {}, node.path + ":" + port.name + (port.off ? " (disabled)" : "")));
    return group;
}

function drawNode(node, index) {
    const classes = ["node"];
    if (node.off) classes.push("off");
    if (node.bypassed) classes.push("bypassed");
    if (node.alarm) classes.push("broken");
    if (node.kind === "missing") classes.push("missing");
    const group = svg("g", {class: classes.join(" "), transform: `translate(${node.x} ${node.y})`, tabindex: 0,
        role: "button", "aria-label": [node.path, ...node.lines, node.alarm].filter(Boolean).join(", ")});
    group.dataset.node = index;
    drawHead(group, node);
    const rows = [0, 0];
    const ports = node.ports.map((port, number) => {
        const element = drawPort(node, port, rows[port.output ? 1 : 0]++);
        element.dataset.port = number;
        group.append(element);
        return element;
    });
    return {group, ports};
}

function curvePoints(curve) {
    const points = [];
    let x = 0, y = 0;
    for (let i = 0; i + 1 < curve.length; i += 2) points.push([x += curve[i], y += curve[i + 1]]);
    return points;
}

function drawEdge(edge) {
    const classes = ["edge"];
    for (const name of ["off", "feedback", "missing"]) if (edge[name]) classes.push(name);
    const group = svg("g", {class: classes.join(" ")});
    const points = curvePoints(edge.curve);
    const tip = points[points.length - 1], end = points[points.length - 2];
    const curve = points.slice(1, -1).map((point, i) => (i % 3 === 0 ? "C" : " ") + point.join(" ")).join("");
    group.append(svg("path", {d: "M" + points[0].join(" ") + curve}));
    const dx = tip[0] - end[0], dy = tip[1] - end[1], length = Math.hypot(dx, dy) || 1;
    const nx = -dy / length * 3.2, ny = dx / length * 3.2;
    group.append(svg("path", {class: "tip",
        d: `M${tip.join(" ")}L${end[0] + nx} ${end[1] + ny}L${end[0] - nx} ${end[1] - ny}Z`}));
    if (edge.label) {
        const element = svg("text", {x: edge.labelAt[0], y: edge.labelAt[1] + 3}, edge.label);
        group.append(element);
    }
    return group;
}

function drawCluster(cluster) {
    const [x, y, width, height] = cluster.area;
    const group = svg("g", {class: "cluster"});
    group.append(svg("rect", {x, y, width, height, rx: 8}));
    label(group, cluster.name, "", x + width / 2, y + 18, width - 2 * MARGIN);
    return group;
}

// Fonts differ: texts that are wider than their place are narrowed, and cut when that would make them hard to read.
function fitTexts(world) {
    const wide = [];
    for (const element of world.querySelectorAll("text[data-width]")) {
        const room = Number(element.dataset.width), length = element.getComputedTextLength();
        if (length > room) wide.push([element, room, length]);
    }
    for (const [element, room, length] of wide) {
        if (length > room * 1.3) {
            const letters = [...element.textContent];
            element.textContent = letters.slice(0, Math.max(1, Math.floor(letters.length * room * 1.2 / length) - 1))
                .join("") + "\u2026";
        }
        element.setAttribute("textLength", room);
        element.setAttribute("lengthAdjust", "spacingAndGlyphs");
    }
}

function draw() {
    const world = byId("world");
    edgeElements = shown.edges.map(drawEdge);
    elements = shown.nodes.map(drawNode);
    world.replaceChildren(...shown.clusters.map(drawCluster), ...edgeElements, ...elements.map((e) => e.group));
    byId("picture").setAttribute("aria-label",
        `${shown.name}: ${shown.nodes.length} boxes, ${shown.edges.length} connections`);
    fitTexts(world);
}

// ---- moving and zooming

function applyCamera() {
    byId("world").setAttribute("transform", `translate(${camera.x} ${camera.y}) scale(${camera.zoom})`);
}
const stageSize = () => [byId("stage").clientWidth || 1, byId("stage").clientHeight || 1];

function fit() {
    const [width, height] = stageSize(), [w, h] = shown.size;
    camera.zoom = Math.min(LARGEST_FIT, width / (w + 40), height / (h + 40));
    camera.x = (width - w * camera.zoom) / 2;
    camera.y = (height - h * camera.zoom) / 2;
    applyCamera();
}
function zoomAt(factor, x, y) {
    const zoom = Math.min(MOST_ZOOM, Math.max(LEAST_ZOOM, camera.zoom * factor));
    camera.x = x - (x - camera.x) * zoom / camera.zoom;
    camera.y = y - (y - camera.y) * zoom / camera.zoom;
    camera.zoom = zoom;
    applyCamera();
}
function zoomBy(factor) {
    const [width, height] = stageSize();
    zoomAt(factor, width / 2, height / 2);
}
function moveBy(x, y) {
    camera.x += x;
    camera.y += y;
    applyCamera();
}
// Brings a node into sight, large enough to read.
function lookAt(node) {
    const [width, height] = stageSize();
    camera.zoom = Math.max(camera.zoom, 0.7);
    camera.x = width / 2 - (node.x + node.width / 2) * camera.zoom;
    camera.y = height / 2 - (node.y + node.height / 2) * camera.zoom;
    applyCamera();
}
function isInSight(node) {
    const [width, height] = stageSize();
    const x = camera.x + node.x * camera.zoom, y = camera.y + node.y * camera.zoom;
    return x >= 0 && y >= 0 && x + node.width * camera.zoom <= width && y + node.height * camera.zoom <= height;
}
