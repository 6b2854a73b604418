// The explorer page: services, resources and objects of this process, live.
//
// Everything the page shows comes from the process's own REST API on this origin, and what is on
// screen is subscribed to over a WebSocket on the same port, so changes show up in place. The
// navigation state lives in the location hash: #/service/resource?query, #/service/resource/uuid.
"use strict";

(function () {
    // A collection is never read whole: every page carries $limit, at most this many objects.
    const MAX_LIMIT = 100;
    const DEFAULT_LIMIT = 20;
    const PAGE_SIZES = [20, 50, 100];
    const MAX_EXPAND = 3;
    // How long a changed value stays marked; long enough to be seen (and tested) after it arrives.
    const CHANGED_MS = 2000;
    // Every element has these attributes without declaring them.
    const DEFAULT_ATTRIBUTES = ["name", "id", "uri"];
    // Parameters of a collection view that the page keeps in the hash; searches are any other name.
    const PAGE_PARAMS = ["$q", "$sortby", "$offset", "$limit"];
    const REASONS = {
        200: "OK", 201: "Created", 202: "Accepted", 204: "No Content", 304: "Not Modified",
        400: "Bad Request", 403: "Forbidden", 404: "Not Found", 405: "Method Not Allowed",
        409: "Conflict", 410: "Gone", 412: "Precondition Failed", 413: "Payload Too Large",
        500: "Internal Server Error", 503: "Service Unavailable"
    };
    const OBJECT_ADDRESS = /^\/([^/?#]+)\/([^/?#]+)\/([^/?#$][^/?#]*)$/;

    const main = document.getElementById("explorer");
    const cache = {
        services: null,          // promise of GET / "data"
        resources: new Map(),    // service name -> promise of its resources
        schemas: new Map()         // "service/resource" -> promise of the parsed $spec
    };
    let navigation = 0;          // counts views, so that a late answer for an old view is dropped
    const pageLoad = Math.random().toString(36).slice(2, 8);

    // ---------------------------------------------------------------- small helpers

    // Builds an element: attrs may hold class, text, dataset-like "data-*" keys, on<Event> handlers.
    function h(tag, attrs, ...children) {
        const el = document.createElement(tag);
        for (const [key, value] of Object.entries(attrs || {})) {
            if (value === undefined || value === null || value === false) {
                continue;
            }
            if (key === "class") {
                el.className = value;
            } else if (key === "text") {
                el.textContent = value;
            } else if (key.startsWith("on") && typeof value === "function") {
                el.addEventListener(key.slice(2), value);
            } else if (value === true) {
                el.setAttribute(key, "");
            } else {
                el.setAttribute(key, String(value));
            }
        }
        appendAll(el, children);
        return el;
    }

    function appendAll(el, children) {
        for (const child of children.flat(Infinity)) {
            if (child === null || child === undefined || child === false) {
                continue;
            }
            el.append(child instanceof Node ? child : document.createTextNode(String(child)));
        }
    }

    function formatCount(n) {
        return Number(n).toLocaleString("en-US");
    }

    function plural(n, word) {
        return `${formatCount(n)} ${word}${n === 1 ? "" : "s"}`;
    }

    // Query values keep "$" and "," readable; everything else is escaped as usual.
    function encode(text) {
        return encodeURIComponent(text).replace(/%24/g, "$").replace(/%2C/gi, ",");
    }

    function decode(text) {
        try {
            return decodeURIComponent(text.replace(/\+/g, " "));
        } catch (e) {
            return text;
        }
    }

    function parseQuery(query) {
        const pairs = [];
        for (const part of query.split("&")) {
            if (part === "") {
                continue;
            }
            const eq = part.indexOf("=");
            pairs.push(eq < 0 ? [decode(part), ""] : [decode(part.slice(0, eq)), decode(part.slice(eq + 1))]);
        }
        return pairs;
    }

    function buildQuery(pairs) {
        return pairs.map(([key, value]) => `${encode(key)}=${encode(String(value))}`).join("&");
    }

    function reasonOf(response) {
        return REASONS[response.status] || response.statusText || "";
    }

    class ApiError extends Error {
        constructor(status, reason, message, address) {
            super(`${status} ${reason}${message ? ": " + message : ""}`);
            this.status = status;
            this.address = address;
        }
    }

    async function getJSON(address) {
        const response = await fetch(address, { headers: { Accept: "application/json" } });
        let body = null;
        try {
            body = await response.json();
        } catch (e) {
            body = null;
        }
        if (!response.ok) {
            throw new ApiError(response.status, reasonOf(response), body && body.message, address);
        }
        return body;
    }

    function getServices() {
        if (!cache.services) {
            cache.services = getJSON("/").then((body) => body.data || []);
            cache.services.catch(() => { cache.services = null; });
        }
        return cache.services;
    }

    function getResources(service) {
        if (!cache.resources.has(service)) {
            const answer = getJSON(`/${encode(service)}`).then((body) => body.data || []);
            cache.resources.set(service, answer);
            answer.catch(() => cache.resources.delete(service));
        }
        return cache.resources.get(service);
    }

    // The definition of a resource does not change while the process runs: read it once.
    function getSchema(service, resource) {
        const key = `${service}/${resource}`;
        if (!cache.schemas.has(key)) {
            const answer = getJSON(`/${encode(service)}/${encode(resource)}/$spec`);
            cache.schemas.set(key, answer);
            answer.catch(() => cache.schemas.delete(key));
        }
        return cache.schemas.get(key);
    }

    // A value that stands for another object: {id, name, uri} or, expanded, the object itself.
    function isReference(value) {
        return value !== null && typeof value === "object" && !Array.isArray(value) &&
            typeof value.uri === "string" && OBJECT_ADDRESS.test(value.uri);
    }

    function isExpanded(value) {
        return isReference(value) && Object.keys(value).some((key) => !DEFAULT_ATTRIBUTES.includes(key));
    }

    function referenceLabel(ref) {
        return ref.name || ref.id || ref.uri;
    }

    function scalarText(value) {
        if (value === null || value === undefined) {
            return "—";
        }
        if (typeof value === "object") {
            return JSON.stringify(value);
        }
        return String(value);
    }

    // Marks an element as just changed; restarting the animation needs the class off for one frame.
    function flash(el) {
        el.classList.remove("changed");
        void el.offsetWidth;
        el.classList.add("changed");
        clearTimeout(el.changedTimer);
        el.changedTimer = setTimeout(() => el.classList.remove("changed"), CHANGED_MS);
    }

    // ---------------------------------------------------------------- status line

    const statusBox = document.getElementById("status");
    const statusResult = document.getElementById("status-result");
    const statusDetail = document.getElementById("status-detail");
    document.getElementById("status-close").addEventListener("click", () => hideStatus());

    function showStatus(kind, result, detail) {
        statusBox.hidden = false;
        statusBox.className = `status ${kind}`;
        statusResult.textContent = result;
        statusDetail.textContent = detail || "";
        statusBox.classList.remove("fresh");
        void statusBox.offsetWidth;
        statusBox.classList.add("fresh");
    }

    function hideStatus() {
        statusBox.hidden = true;
    }

    // ---------------------------------------------------------------- live updates

    // One WebSocket for the page, one subscription at a time: exactly what the view shows.
    const live = {
        socket: null,
        open: false,
        wanted: null,      // { event, onData, onError }
        serial: 0,
        retryMs: 500,
        indicator: document.getElementById("live-state"),

        setState(state, text) {
            this.indicator.dataset.state = state;
            this.indicator.textContent = text;
        },

        connect() {
            const scheme = location.protocol === "https:" ? "wss:" : "ws:";
            this.setState("connecting", "connecting");
            let socket;
            try {
                socket = new WebSocket(`${scheme}//${location.host}/`);
            } catch (e) {
                this.scheduleReconnect();
                return;
            }
            this.socket = socket;
            socket.addEventListener("open", () => {
                this.open = true;
                this.retryMs = 500;
                this.setState("open", "live");
                if (this.wanted) {
                    this.send({ type: "subscribe", event: this.wanted.event });
                }
            });
            socket.addEventListener("message", (message) => this.receive(message.data));
            socket.addEventListener("close", () => {
                this.open = false;
                this.socket = null;
                this.setState("closed", "offline");
                this.scheduleReconnect();
            });
        },

        // The process may restart; try again, less often the longer it stays away.
        scheduleReconnect() {
            setTimeout(() => this.connect(), this.retryMs);
            this.retryMs = Math.min(this.retryMs * 2, 10000);
        },

        send(message) {
            if (this.open) {
                this.socket.send(JSON.stringify(message));
            }
        },

        // The tag makes the event unique to this view, so messages for an earlier view are told apart.
        watch(address, handlers) {
            this.unwatch();
            this.serial += 1;
            this.wanted = Object.assign({ event: `${address}#view${this.serial}` }, handlers);
            this.send({ type: "subscribe", event: this.wanted.event });
        },

        unwatch() {
            if (this.wanted) {
                this.send({ type: "unsubscribe", event: this.wanted.event });
                this.wanted = null;
            }
        },

        receive(text) {
            let message;
            try {
                message = JSON.parse(text);
            } catch (e) {
                return;
            }
            const wanted = this.wanted;
            if (!wanted || message.event !== wanted.event) {
                return;
            }
            if (message.type === "data" && wanted.onData) {
                wanted.onData(message);
            } else if (message.type === "error") {
                if (wanted.onError) {
                    wanted.onError(message);
                }
                showStatus("error", `${message.code} ${REASONS[message.code] || "Error"}${message.message ? ": " + message.message : ""}`,
                    `live updates of ${wanted.event.replace(/#.*$/, "")}`);
            }
        }
    };

    // ---------------------------------------------------------------- routing

    function parseHash() {
        const raw = location.hash.replace(/^#/, "") || "/";
        const mark = raw.indexOf("?");
        const path = mark < 0 ? raw : raw.slice(0, mark);
        const query = mark < 0 ? "" : raw.slice(mark + 1);
        return { parts: path.split("/").filter(Boolean).map(decode), params: parseQuery(query) };
    }

    function go(hash) {
        if (location.hash === hash) {
            route();
        } else {
            location.hash = hash;
        }
    }

    function pathOf(...parts) {
        return "/" + parts.map(encode).join("/");
    }

    async function route() {
        const token = ++navigation;
        live.unwatch();
        // A write's answer belongs to the view it was made in.
        hideStatus();
        const { parts, params } = parseHash();
        main.setAttribute("aria-busy", "true");
        main.classList.add("loading");
        markTree(parts);
        try {
            if (parts.length === 0) {
                await showHome(token);
            } else if (parts.length === 1) {
                await showService(parts[0], token);
            } else if (parts.length === 2 && parts[1] === "$spec") {
                await showServiceDefinition(parts[0], token);
            } else if (parts.length === 2) {
                await showCollection(parts[0], parts[1], params, token);
            } else if (parts.length === 3 && parts[2] === "$spec") {
                await showResourceSchema(parts[0], parts[1], token);
            } else if (parts.length === 3) {
                await showObject(parts[0], parts[1], parts[2], params, token);
            } else {
                throw new ApiError(404, "Not Found", "the explorer has no view for this address", location.hash);
            }
        } catch (error) {
            if (token === navigation) {
                showFailure(error);
            }
        } finally {
            if (token === navigation) {
                main.classList.remove("loading");
                main.setAttribute("aria-busy", "false");
                // Counts finished views, so that a script driving the page can wait for the next one.
                main.dataset.rendered = `${pageLoad}-${token}`;
            }
        }
    }

    function setView(title, crumbs, ...content) {
        document.title = title ? `${title} · ServiceDB explorer` : "ServiceDB explorer";
        const nav = document.getElementById("crumbs");
        nav.replaceChildren();
        const all = [["Services", "#/"]].concat(crumbs);
        all.forEach(([label, href], i) => {
            if (i > 0) {
                nav.append(h("span", { class: "sep", "aria-hidden": "true", text: "›" }));
            }
            nav.append(i === all.length - 1 ? h("span", { class: "here", text: label }) : h("a", { href, text: label }));
        });
        main.replaceChildren(...content.flat());
    }

    function showFailure(error) {
        const status = error instanceof ApiError ? error.message : `Cannot reach the process: ${error.message}`;
        setView("Error", [["Error", "#"]],
            h("section", { class: "failure", "data-testid": "failure" },
                h("h1", { text: "Nothing to show" }),
                h("p", { class: "failure-status", text: status }),
                error.address ? h("p", { class: "muted mono", text: error.address }) : null,
                h("p", {}, h("a", { href: "#/", text: "Back to the services" }))));
    }

    // ---------------------------------------------------------------- service tree

    const tree = document.getElementById("tree");

    async function buildTree() {
        let services;
        try {
            services = await getServices();
        } catch (error) {
            tree.replaceChildren(h("p", { class: "muted", text: "The services cannot be read." }));
            return;
        }
        const list = h("ul", { class: "tree" });
        for (const service of services) {
            const resources = h("ul", { class: "tree-resources" });
            list.append(h("li", { class: "tree-service", "data-service": service.name },
                h("a", { href: `#${pathOf(service.name)}`, class: "tree-link", "data-testid": `tree-service-${service.name}` },
                    h("span", { class: "tree-name", text: service.name }),
                    h("span", { class: "badge", text: (service.versions || []).join(", ") })),
                resources));
            getResources(service.name).then((items) => {
                for (const resource of items) {
                    resources.append(h("li", { "data-resource": `${service.name}/${resource.name}` },
                        h("a", {
                            href: `#${pathOf(service.name, resource.name)}`, class: "tree-link",
                            title: resource.description || "", "data-testid": `tree-resource-${service.name}-${resource.name}`
                        }, resource.name)));
                }
                markTree(parseHash().parts);
            }).catch(() => resources.append(h("li", { class: "muted", text: "cannot be read" })));
        }
        tree.replaceChildren(list);
        markTree(parseHash().parts);
    }

    function markTree(parts) {
        for (const el of tree.querySelectorAll(".current")) {
            el.classList.remove("current");
        }
        if (parts.length >= 2) {
            const item = tree.querySelector(`[data-resource="${CSS.escape(parts[0] + "/" + parts[1])}"]`);
            if (item) {
                item.classList.add("current");
            }
        } else if (parts.length === 1) {
            const item = tree.querySelector(`[data-service="${CSS.escape(parts[0])}"] > .tree-link`);
            if (item) {
                item.classList.add("current");
            }
        }
    }

    // ---------------------------------------------------------------- services and resources

    async function showHome(token) {
        const services = await getServices();
        if (token !== navigation) {
            return;
        }
        const cards = services.map((service) =>
            h("article", { class: "card", "data-testid": "service-card", "data-service": service.name },
                h("h2", {}, h("a", { href: `#${pathOf(service.name)}`, "data-testid": "service-name", text: service.name })),
                h("p", { class: "description", "data-testid": "service-description", text: service.description || "" }),
                h("dl", { class: "facts" },
                    h("dt", { text: "Versions" }),
                    h("dd", { "data-testid": "service-versions", text: (service.versions || []).join(", ") || "—" }),
                    h("dt", { text: "Categories" }),
                    h("dd", { text: (service.serviceCategories || []).join(", ") || "—" }),
                    h("dt", { text: "Id" }),
                    h("dd", { class: "mono", text: service.id || "—" })),
                resourceLinks(service.name)));
        setView("", [],
            h("h1", { text: "Services" }),
            h("p", { class: "muted", text: `${plural(services.length, "service")} in this process.` }),
            h("div", { class: "cards", "data-testid": "service-list" }, cards));
    }

    function resourceLinks(service) {
        const line = h("p", { class: "resources", "data-testid": "service-resources" }, h("span", { class: "muted", text: "Resources: " }));
        getResources(service).then((resources) => {
            for (const resource of resources) {
                line.append(h("a", { href: `#${pathOf(service, resource.name)}`, title: resource.description || "", text: resource.name }));
            }
        }).catch(() => line.append("cannot be read"));
        return line;
    }

    async function showService(service, token) {
        const [services, resources] = await Promise.all([getServices(), getResources(service)]);
        if (token !== navigation) {
            return;
        }
        const info = services.find((s) => s.name === service) || { name: service };
        const rows = resources.map((resource) => {
            const count = h("td", { class: "num muted", "data-testid": "resource-count", text: "…" });
            // One object is enough to learn the total; the paging says how many there are.
            getJSON(`${pathOf(service, resource.name)}?$limit=1`).then((body) => {
                const total = body.paging ? body.paging.total : (body.data || []).length;
                count.textContent = formatCount(total);
                count.classList.remove("muted");
            }).catch(() => { count.textContent = "?"; });
            return h("tr", { "data-resource": resource.name },
                h("td", {}, h("a", { href: `#${pathOf(service, resource.name)}`, class: "strong", text: resource.name })),
                h("td", { text: resource.description || "" }),
                count,
                h("td", {}, h("a", { href: `#${pathOf(service, resource.name, "$spec")}`, text: "schema" })));
        });
        setView(service, [[service, `#${pathOf(service)}`]],
            h("div", { class: "view-head" },
                h("h1", { text: service }),
                h("a", { class: "button", href: `#${pathOf(service, "$spec")}`, "data-testid": "service-definition-link", text: "Definition" })),
            h("p", { class: "description", text: info.description || "" }),
            h("dl", { class: "facts inline" },
                h("dt", { text: "Versions" }), h("dd", { text: (info.versions || []).join(", ") || "—" }),
                h("dt", { text: "Categories" }), h("dd", { text: (info.serviceCategories || []).join(", ") || "—" }),
                h("dt", { text: "Id" }), h("dd", { class: "mono", text: info.id || "—" })),
            h("table", { class: "grid", "data-testid": "resource-list" },
                h("thead", {}, h("tr", {}, h("th", { text: "Resource" }), h("th", { text: "Description" }),
                    h("th", { class: "num", text: "Objects" }), h("th", { text: "" }))),
                h("tbody", {}, rows)));
    }

    async function showServiceDefinition(service, token) {
        const response = await fetch(`${pathOf(service, "$spec")}`);
        const text = await response.text();
        if (!response.ok) {
            throw new ApiError(response.status, reasonOf(response), "", `${pathOf(service, "$spec")}`);
        }
        if (token !== navigation) {
            return;
        }
        let shown;
        try {
            shown = jsonView(JSON.parse(text));
        } catch (e) {
            shown = h("pre", { class: "json", "data-testid": "schema-json", text });
        }
        setView(`${service} definition`, [[service, `#${pathOf(service)}`], ["definition", "#"]],
            h("h1", { text: `${service} — definition` }),
            h("p", { class: "muted", text: "The service's definition file as the process loaded it." }),
            shown);
    }

    // ---------------------------------------------------------------- schema of a resource

    function describeAttribute(schema) {
        const parts = [];
        if (schema.enum) {
            parts.push(`one of ${schema.enum.join(", ")}`);
        }
        if (schema.format) {
            parts.push(`format ${schema.format}`);
        }
        if (schema.minimum !== undefined || schema.maximum !== undefined) {
            parts.push(`${schema.minimum !== undefined ? schema.minimum : "…"} to ${schema.maximum !== undefined ? schema.maximum : "…"}`);
        }
        if (schema.resolution !== undefined) {
            parts.push(`step ${schema.resolution}`);
        }
        if (schema.targets) {
            parts.push(`→ ${schema.targets.join(", ")}`);
        }
        return parts.join("; ");
    }

    function typeText(schema) {
        if (!schema) {
            return "string";
        }
        return `${schema.type || "string"}${schema.array ? "[]" : ""}`;
    }

    function ruleText(rule) {
        if (rule === true) {
            return "yes";
        }
        if (Array.isArray(rule)) {
            return rule.length ? rule.join(", ") : "no";
        }
        return "no";
    }

    // Which attributes of an object the access rules let a user post.
    function postable(schema) {
        const rule = schema && schema.access && schema.access.objects && schema.access.objects.post;
        const all = ["name"].concat(Object.keys((schema && schema.attributes) || {}));
        if (rule === true) {
            return new Set(all.filter((name) => name !== "id" && name !== "uri"));
        }
        return new Set(Array.isArray(rule) ? rule : []);
    }

    async function showResourceSchema(service, resource, token) {
        const schema = await getSchema(service, resource);
        if (token !== navigation) {
            return;
        }
        const writable = postable(schema);
        const attributes = Object.entries(schema.attributes || {});
        const access = schema.access || {};
        const accessRows = ["resource", "objects"].map((part) => {
            const rules = access[part] || {};
            return h("tr", {},
                h("th", { text: part }),
                h("td", { text: rules.get ? "yes" : "no" }),
                h("td", { text: ruleText(rules.post) }),
                h("td", { text: (rules.required || []).join(", ") || "—" }),
                h("td", { text: ruleText(rules.delete) }));
        });
        setView(`${service}/${resource} schema`,
            [[service, `#${pathOf(service)}`], [resource, `#${pathOf(service, resource)}`], ["schema", "#"]],
            resourceHead(service, resource, schema.description, "schema"),
            h("h2", { text: `Attributes of ${schema.element || "the element"}` }),
            h("table", { class: "grid", "data-testid": "schema-attributes" },
                h("thead", {}, h("tr", {}, h("th", { text: "Attribute" }), h("th", { text: "Type" }),
                    h("th", { text: "Constraints" }), h("th", { text: "Writable" }))),
                h("tbody", {},
                    DEFAULT_ATTRIBUTES.map((name) => h("tr", { class: "muted" },
                        h("td", { class: "mono", text: name }), h("td", { text: "string" }),
                        h("td", { text: "default attribute" }), h("td", { text: writable.has(name) ? "yes" : "no" }))),
                    attributes.map(([name, attr]) => h("tr", { "data-attribute": name },
                        h("td", { class: "mono strong", text: name }),
                        h("td", { text: typeText(attr) }),
                        h("td", { text: describeAttribute(attr) || "—" }),
                        h("td", { text: writable.has(name) ? "yes" : "no" }))))),
            h("h2", { text: "Access" }),
            h("table", { class: "grid compact", "data-testid": "schema-access" },
                h("thead", {}, h("tr", {}, h("th", { text: "Part" }), h("th", { text: "get" }), h("th", { text: "post" }),
                    h("th", { text: "required" }), h("th", { text: "delete" }))),
                h("tbody", {}, accessRows)),
            h("h2", { text: "Definition" }),
            jsonView(schema));
    }

    // Pretty-printed JSON with its tokens coloured; the text stays exactly the JSON.
    function jsonView(value) {
        const pre = h("pre", { class: "json", "data-testid": "schema-json" });
        const text = JSON.stringify(value, null, 2);
        const token = /("(?:[^"\\]|\\.)*")(\s*:)?|\b(true|false|null)\b|(-?\d+(?:\.\d+)?(?:[eE][+-]?\d+)?)/g;
        let last = 0;
        let match;
        while ((match = token.exec(text)) !== null) {
            pre.append(text.slice(last, match.index));
            if (match[1]) {
                pre.append(h("span", { class: match[2] ? "j-key" : "j-str", text: match[1] }));
                if (match[2]) {
                    pre.append(match[2]);
                }
            } else if (match[3]) {
                pre.append(h("span", { class: "j-lit", text: match[3] }));
            } else {
                pre.append(h("span", { class: "j-num", text: match[4] }));
            }
            last = token.lastIndex;
        }
        pre.append(text.slice(last));
        return pre;
    }

    function resourceHead(service, resource, description, current) {
        const tab = (name, label, href) => h("a", {
            href, class: `tab${current === name ? " active" : ""}`, "data-testid": `tab-${name}`, text: label
        });
        return h("div", { class: "view-head" },
            h("div", {},
                h("h1", {}, h("span", { class: "muted", text: `${service} / ` }), resource),
                description ? h("p", { class: "description", "data-testid": "resource-description", text: description }) : null),
            h("nav", { class: "tabs" },
                tab("objects", "Objects", `#${pathOf(service, resource)}`),
                tab("schema", "Schema", `#${pathOf(service, resource, "$spec")}`)));
    }

    // ---------------------------------------------------------------- a page of objects

    // The search box: "attr=value" terms (separated by spaces or &, quotes around values with
    // spaces) search that attribute; any other text is a free-text search over all attributes.
    function parseSearch(text) {
        const terms = [];
        const term = /(^|[\s&])([A-Za-z_][\w-]*)=(?:"([^"]*)"|([^\s&]*))/g;
        const rest = text.replace(term, (whole, lead, name, quoted, plain) => {
            const value = quoted !== undefined ? quoted : plain;
            if (value !== "") {
                terms.push([name, value]);
            }
            return " ";
        });
        const free = rest.replace(/&/g, " ").replace(/\s+/g, " ").trim();
        return { terms, free };
    }

    function searchText(state) {
        const terms = state.terms.map(([name, value]) => `${name}=${/[\s&"]/.test(value) ? `"${value}"` : value}`);
        if (state.q) {
            terms.push(state.q);
        }
        return terms.join(" ");
    }

    // What a collection view shows, taken from the hash and kept within the limits.
    function collectionState(params) {
        const state = { terms: [], q: "", sortby: "", offset: 0, limit: DEFAULT_LIMIT };
        for (const [key, value] of params) {
            if (key === "$q") {
                state.q = value;
            } else if (key === "$sortby") {
                state.sortby = value;
            } else if (key === "$offset") {
                state.offset = Math.max(0, parseInt(value, 10) || 0);
            } else if (key === "$limit") {
                state.limit = Math.min(MAX_LIMIT, Math.max(1, parseInt(value, 10) || DEFAULT_LIMIT));
            } else if (!key.startsWith("$") && key !== "" && value !== "") {
                state.terms.push([key, value]);
            }
        }
        return state;
    }

    function collectionQuery(state) {
        const pairs = state.terms.slice();
        if (state.q) {
            pairs.push(["$q", state.q]);
        }
        if (state.sortby) {
            pairs.push(["$sortby", state.sortby]);
        }
        pairs.push(["$offset", state.offset], ["$limit", Math.min(state.limit, MAX_LIMIT)]);
        return buildQuery(pairs);
    }

    function columnsOf(schema) {
        return ["name"].concat(Object.keys(schema.attributes || {}).filter((name) => !DEFAULT_ATTRIBUTES.includes(name)));
    }

    function cellContent(value) {
        if (value === null || value === undefined) {
            return h("span", { class: "muted", text: "—" });
        }
        if (isReference(value)) {
            return h("a", { href: `#${value.uri}`, class: "ref", text: referenceLabel(value) });
        }
        if (Array.isArray(value)) {
            if (value.length === 0) {
                return h("span", { class: "muted", text: "none" });
            }
            const shown = value.slice(0, 3).map((item, i) => [i > 0 ? ", " : null, cellContent(item)]);
            return h("span", {}, shown, value.length > 3 ? h("span", { class: "muted", text: ` +${value.length - 3}` }) : null);
        }
        return scalarText(value);
    }

    function sameValue(a, b) {
        return JSON.stringify(a) === JSON.stringify(b);
    }

    async function showCollection(service, resource, params, token) {
        const state = collectionState(params);
        const query = collectionQuery(state);
        const address = `${pathOf(service, resource)}?${query}`;
        // Keep the hash canonical, so that reload and back show the same page.
        const canonical = `#${address}`;
        if (location.hash !== canonical) {
            history.replaceState(null, "", canonical);
        }
        const [schema, resources, body] = await Promise.all([
            getSchema(service, resource),
            getResources(service).catch(() => []),
            getJSON(address)
        ]);
        if (token !== navigation) {
            return;
        }
        const info = resources.find((r) => r.name === resource) || {};
        const columns = columnsOf(schema);
        const numeric = new Set(columns.filter((c) => {
            const attr = (schema.attributes || {})[c];
            return attr && !attr.array && ["integer", "unsigned", "number"].includes(attr.type);
        }));
        const navigate = (changes) => go(`#${pathOf(service, resource)}?${collectionQuery(Object.assign({}, state, changes))}`);

        // Header cells sort: first click ascending, the next descending.
        const headCells = columns.map((column) => {
            const sorted = state.sortby === column ? "ascending" : state.sortby === `-${column}` ? "descending" : null;
            const next = state.sortby === column ? `-${column}` : column;
            return h("th", { "aria-sort": sorted || "none", "data-col": column, class: numeric.has(column) ? "num" : null },
                h("button", {
                    type: "button", class: "sort", "data-testid": `sort-${column}`,
                    title: `Sort by ${column}${next.startsWith("-") ? ", descending" : ""}`,
                    onclick: () => navigate({ sortby: next, offset: 0 })
                }, column, h("span", { class: "arrow", "aria-hidden": "true", text: sorted === "ascending" ? "▲" : sorted === "descending" ? "▼" : "↕" })));
        });

        const tbody = h("tbody", { "data-testid": "rows" });
        const table = h("table", { class: "grid objects", "data-testid": "objects-table" },
            h("thead", {}, h("tr", {}, headCells)), tbody);

        const renderRow = (object) => h("tr", { "data-uri": object.uri || "" },
            columns.map((column) => {
                const value = object[column];
                const td = h("td", { "data-col": column });
                if (column === "name") {
                    td.append(h("a", { href: `#${object.uri}`, class: "strong", "data-testid": "object-link", text: object.name || object.id || "(unnamed)" }));
                } else {
                    td.append(cellContent(value));
                    if (numeric.has(column)) {
                        td.classList.add("num");
                    }
                }
                td.value = value;
                return td;
            }));

        const fillRows = (objects, live) => {
            if (objects.length === 0) {
                tbody.replaceChildren(h("tr", { class: "empty" },
                    h("td", { colspan: columns.length, "data-testid": "no-rows", text: "No objects match." })));
                return;
            }
            const current = Array.from(tbody.querySelectorAll("tr[data-uri]"));
            const sameRows = current.length === objects.length &&
                current.every((tr, i) => tr.dataset.uri === (objects[i].uri || ""));
            if (sameRows) {
                // Same objects in the same places: change only the cells whose value changed.
                objects.forEach((object, i) => {
                    for (const td of current[i].cells) {
                        const value = object[td.dataset.col];
                        if (!sameValue(td.value, value)) {
                            const fresh = renderRow(object).cells[td.cellIndex];
                            td.replaceChildren(...fresh.childNodes);
                            td.value = value;
                            flash(td);
                        }
                    }
                });
                return;
            }
            const before = new Set(current.map((tr) => tr.dataset.uri));
            tbody.replaceChildren(...objects.map((object) => {
                const tr = renderRow(object);
                if (live && !before.has(tr.dataset.uri)) {
                    flash(tr);
                }
                return tr;
            }));
        };

        const pagingInfo = h("span", { class: "paging-info", "data-testid": "paging-info" });
        const first = h("button", { type: "button", "data-testid": "page-first", title: "First page", text: "«" });
        const prev = h("button", { type: "button", "data-testid": "page-prev", text: "‹ Previous" });
        const next = h("button", { type: "button", "data-testid": "page-next", text: "Next ›" });
        const last = h("button", { type: "button", "data-testid": "page-last", title: "Last page", text: "»" });
        let paging = null;
        const fillPaging = (answer) => {
            const objects = answer.data || [];
            // An empty answer may come without paging: then there is nothing before or after it.
            paging = answer.paging || { offset: state.offset, limit: state.limit, total: state.offset + objects.length,
                totalPages: objects.length ? 1 : 0 };
            const total = paging.total || 0;
            const page = Math.floor((paging.offset || 0) / (paging.limit || state.limit)) + 1;
            pagingInfo.dataset.total = String(total);
            pagingInfo.textContent = total === 0 ? "No objects"
                : `Page ${formatCount(page)} of ${formatCount(paging.totalPages || 1)} · ${plural(total, "object")}`;
            prev.disabled = first.disabled = !paging.previous && (paging.offset || 0) === 0;
            next.disabled = last.disabled = !paging.next;
        };
        first.addEventListener("click", () => navigate({ offset: 0 }));
        prev.addEventListener("click", () => navigate({ offset: Math.max(0, state.offset - state.limit) }));
        next.addEventListener("click", () => navigate({ offset: state.offset + state.limit }));
        last.addEventListener("click", () => {
            const pages = Math.max(1, paging.totalPages || 1);
            navigate({ offset: (pages - 1) * state.limit });
        });
        const size = h("select", { "data-testid": "page-size", "aria-label": "Objects per page",
            onchange: (event) => navigate({ limit: Number(event.target.value), offset: 0 }) },
            PAGE_SIZES.map((n) => h("option", { value: n, selected: n === state.limit, text: `${n} a page` })));

        const input = h("input", {
            type: "search", name: "search", class: "search-input", "data-testid": "search-input",
            placeholder: "Search: free text, or attr=value", autocomplete: "off", spellcheck: "false",
            "aria-label": "Search"
        });
        input.value = searchText(state);
        const form = h("form", { class: "search", "data-testid": "search-form", role: "search" },
            input,
            h("button", { type: "submit", class: "primary", "data-testid": "search-submit", text: "Search" }),
            h("button", {
                type: "button", "data-testid": "search-clear", text: "Clear",
                onclick: () => navigate({ terms: [], q: "", offset: 0 })
            }));
        form.addEventListener("submit", (event) => {
            event.preventDefault();
            const { terms, free } = parseSearch(input.value);
            navigate({ terms, q: free, offset: 0 });
        });
        const attributes = columns.filter((c) => c !== "name").slice(0, 2);
        const example = attributes.length ? `${attributes[0]}=value` : "name=value";
        const hint = h("p", { class: "hint", "data-testid": "search-hint" },
            "Words search all attributes · ", h("code", { text: example }), " searches one; join several with spaces or ",
            h("code", { text: "&" }), ", quote spaces: ", h("code", { text: 'name="A b"' }), " · ",
            h("code", { text: "%" }), " any text · ", h("code", { text: "a,b" }), " either value");

        fillRows(body.data || [], false);
        fillPaging(body);
        setView(`${service}/${resource}`, [[service, `#${pathOf(service)}`], [resource, `#${pathOf(service, resource)}`]],
            resourceHead(service, resource, info.description, "objects"),
            h("div", { class: "toolbar" }, form,
                h("div", { class: "pager", "data-testid": "pager" }, first, prev, pagingInfo, next, last), size),
            hint,
            h("div", { class: "table-wrap" }, table));

        live.watch(address, {
            onData: (message) => {
                fillRows(message.data || [], true);
                fillPaging(message);
            }
        });
    }

    // ---------------------------------------------------------------- one object

    function orderedKeys(object, schema) {
        const declared = Object.keys((schema && schema.attributes) || {});
        const keys = DEFAULT_ATTRIBUTES.concat(declared.filter((k) => !DEFAULT_ATTRIBUTES.includes(k)));
        for (const key of Object.keys(object)) {
            if (!keys.includes(key)) {
                keys.push(key);
            }
        }
        return keys;
    }

    // Renders a value as an element that carries its path, so that a later change can find it.
    function renderValue(value, path) {
        let el;
        if (isReference(value)) {
            el = h("div", { class: "ref-value" },
                h("a", { href: `#${value.uri}`, class: "ref", "data-testid": "ref-link", text: referenceLabel(value) }),
                h("span", { class: "uri", text: value.uri }));
            if (isExpanded(value)) {
                const rows = Object.keys(value).filter((k) => !DEFAULT_ATTRIBUTES.includes(k)).sort().map((key) =>
                    h("tr", {}, h("th", { text: key }), h("td", {}, renderValue(value[key], `${path}.${key}`))));
                el.append(h("table", { class: "nested", "data-testid": "expanded" }, h("tbody", {}, rows)));
            }
        } else if (Array.isArray(value)) {
            el = value.length === 0 ? h("span", { class: "muted", text: "[ ]" })
                : h("ol", { class: "array" }, value.map((item, i) => h("li", {}, renderValue(item, `${path}[${i}]`))));
        } else if (value !== null && typeof value === "object") {
            el = h("pre", { class: "json small", text: JSON.stringify(value, null, 2) });
        } else {
            el = h("span", { class: value === null || value === undefined ? "scalar muted" : "scalar", text: scalarText(value) });
        }
        el.classList.add("value");
        el.dataset.path = path;
        el.value = value;
        return el;
    }

    function sameShape(a, b) {
        if (isReference(a) && isReference(b)) {
            const ka = Object.keys(a).sort().join();
            return a.uri === b.uri && ka === Object.keys(b).sort().join();
        }
        if (Array.isArray(a) && Array.isArray(b)) {
            return a.length === b.length;
        }
        const scalar = (v) => v === null || v === undefined || typeof v !== "object";
        return scalar(a) && scalar(b);
    }

    // Brings a rendered value up to date in place and marks what changed.
    function patchValue(el, value) {
        const old = el.value;
        if (sameValue(old, value)) {
            return;
        }
        if (!sameShape(old, value)) {
            const fresh = renderValue(value, el.dataset.path);
            el.replaceWith(fresh);
            flash(fresh);
            return;
        }
        el.value = value;
        if (isReference(value)) {
            const link = el.querySelector(":scope > a.ref");
            if (link.textContent !== referenceLabel(value)) {
                link.textContent = referenceLabel(value);
                flash(link);
            }
            const nested = el.querySelector(":scope > table.nested > tbody");
            if (nested) {
                for (const child of nested.querySelectorAll(":scope > tr > td > .value")) {
                    const key = child.dataset.path.slice(el.dataset.path.length + 1);
                    patchValue(child, value[key]);
                }
            }
        } else if (Array.isArray(value)) {
            el.querySelectorAll(":scope > li > .value").forEach((child, i) => patchValue(child, value[i]));
        } else {
            el.textContent = scalarText(value);
            el.classList.toggle("muted", value === null || value === undefined);
            flash(el);
        }
    }

    // What the editor starts with: references as their addresses, arrays as JSON.
    function editText(value) {
        const plain = (v) => (isReference(v) ? v.uri : v);
        if (Array.isArray(value)) {
            return JSON.stringify(value.map(plain));
        }
        if (value === null || value === undefined) {
            return "";
        }
        return String(plain(value));
    }

    // Turns the typed text into the JSON value the attribute's type asks for.
    function typedValue(text, schema) {
        const type = (schema && schema.type) || "string";
        if (schema && schema.array) {
            let parsed;
            try {
                parsed = JSON.parse(text);
            } catch (e) {
                return { error: "write an array as JSON, e.g. [1, 2]" };
            }
            return Array.isArray(parsed) ? { value: parsed } : { error: "write an array as JSON, e.g. [1, 2]" };
        }
        const trimmed = text.trim();
        if (type === "integer" || type === "unsigned") {
            return /^[-+]?\d+$/.test(trimmed) ? { value: Number(trimmed) } : { error: `"${text}" is not a whole number` };
        }
        if (type === "number") {
            const number = Number(trimmed);
            return trimmed !== "" && Number.isFinite(number) ? { value: number } : { error: `"${text}" is not a number` };
        }
        if (type === "boolean") {
            return trimmed === "true" || trimmed === "false" ? { value: trimmed === "true" } : { error: "choose true or false" };
        }
        if (type === "reference") {
            return { value: trimmed };
        }
        return { value: text };
    }

    async function post(address, attribute, value) {
        const body = JSON.stringify({ [attribute]: value });
        let response;
        try {
            response = await fetch(address, {
                method: "POST", headers: { "Content-Type": "application/json", Accept: "application/json" }, body
            });
        } catch (error) {
            showStatus("error", "No answer", `${attribute} = ${JSON.stringify(value)}: ${error.message}`);
            return false;
        }
        let answer = null;
        try {
            answer = await response.json();
        } catch (e) {
            answer = null;
        }
        const result = `${response.status} ${reasonOf(response)}`;
        if (response.ok) {
            const later = response.status === 202 ? " — accepted; it shows once the vehicle confirms it" : "";
            showStatus("ok", result, `${attribute} = ${JSON.stringify(value)}${later}`);
            return true;
        }
        const message = answer && answer.message ? answer.message : "";
        showStatus("error", message ? `${result}: ${message}` : result, `${attribute} = ${JSON.stringify(value)} was refused`);
        return false;
    }

    function editorFor(attribute, schema, row, address) {
        const display = row.querySelector(".value-cell");
        const control = schema && (schema.enum || schema.type === "boolean") && !schema.array
            ? h("select", { "data-testid": `input-${attribute}`, "aria-label": attribute },
                (schema.enum || ["true", "false"]).map((option) => h("option", { value: option, text: option })))
            : h("input", {
                type: "text", "data-testid": `input-${attribute}`, "aria-label": attribute, spellcheck: "false",
                inputmode: schema && ["number", "integer", "unsigned"].includes(schema.type) && !schema.array ? "decimal" : null
            });
        const form = h("form", { class: "editor", "data-testid": `editor-${attribute}` },
            control,
            h("button", { type: "submit", class: "primary", "data-testid": `save-${attribute}`, text: "Save" }),
            h("button", { type: "button", "data-testid": `cancel-${attribute}`, text: "Cancel", onclick: () => close() }),
            h("span", { class: "muted small", text: typeText(schema) + (schema && describeAttribute(schema) ? ` · ${describeAttribute(schema)}` : "") }));
        const close = () => {
            form.remove();
            row.classList.remove("editing");
        };
        form.addEventListener("keydown", (event) => {
            if (event.key === "Escape") {
                close();
            }
        });
        form.addEventListener("submit", async (event) => {
            event.preventDefault();
            const typed = typedValue(control.value, schema);
            if (typed.error) {
                showStatus("error", "Not sent", `${attribute}: ${typed.error}`);
                return;
            }
            form.classList.add("busy");
            const ok = await post(address, attribute, typed.value);
            form.classList.remove("busy");
            if (ok) {
                close();
            }
        });
        return {
            open() {
                if (row.classList.contains("editing")) {
                    control.focus();
                    return;
                }
                control.value = editText(display.querySelector(".value").value);
                row.classList.add("editing");
                display.after(form);
                control.focus();
                if (control.select) {
                    control.select();
                }
            }
        };
    }

    async function showObject(service, resource, id, params, token) {
        const expandParam = params.find(([key]) => key === "$expand");
        const level = Math.min(MAX_EXPAND, Math.max(0, parseInt(expandParam ? expandParam[1] : "0", 10) || 0));
        const objectAddress = pathOf(service, resource, id);
        const address = level > 0 ? `${objectAddress}?$expand=${level}` : objectAddress;
        const [schema, body] = await Promise.all([getSchema(service, resource), getJSON(address)]);
        if (token !== navigation) {
            return;
        }
        const object = body.data || {};
        const attributes = (schema && schema.attributes) || {};
        const writable = postable(schema);
        const label = object.name || object.id || id;

        const rows = orderedKeys(object, schema).map((key) => {
            const attrSchema = attributes[key] || (DEFAULT_ATTRIBUTES.includes(key) ? { type: "string" } : null);
            const valueCell = h("div", { class: "value-cell" }, renderValue(object[key], key));
            const row = h("tr", { "data-testid": `attr-${key}`, "data-attribute": key },
                h("th", {},
                    h("span", { class: "attr-name", text: key }),
                    h("span", { class: "attr-type", text: attrSchema ? typeText(attrSchema) : "" })),
                h("td", {}, h("div", { class: "cell-line" }, valueCell)));
            if (writable.has(key)) {
                const editor = editorFor(key, attrSchema, row, objectAddress);
                row.classList.add("writable");
                row.querySelector(".cell-line").append(h("button", {
                    type: "button", class: "edit", "data-testid": `edit-${key}`, title: `Change ${key}`,
                    text: "Edit", onclick: () => editor.open()
                }));
                valueCell.addEventListener("dblclick", () => editor.open());
            }
            return row;
        });
        const tbody = h("tbody", {}, rows);

        const expand = h("select", {
            "data-testid": "expand-level", id: "expand-level",
            onchange: (event) => {
                const n = Number(event.target.value);
                go(`#${objectAddress}${n > 0 ? `?$expand=${n}` : ""}`);
            }
        }, [0, 1, 2, 3].map((n) => h("option", {
            value: n, selected: n === level, text: n === 0 ? "0 — links only" : `${n} level${n > 1 ? "s" : ""}`
        })));
        const canonical = `#${address}`;
        if (location.hash !== canonical) {
            history.replaceState(null, "", canonical);
        }

        setView(label, [[service, `#${pathOf(service)}`], [resource, `#${pathOf(service, resource)}`], [label, "#"]],
            h("div", { class: "view-head" },
                h("div", {},
                    h("h1", { "data-testid": "object-title", text: label }),
                    h("p", { class: "mono muted", "data-testid": "object-uri", text: object.uri || objectAddress })),
                h("nav", { class: "tabs" },
                    h("a", { class: "tab", href: `#${pathOf(service, resource)}`, "data-testid": "tab-objects", text: "Objects" }),
                    h("a", { class: "tab", href: `#${pathOf(service, resource, "$spec")}`, text: "Schema" }))),
            h("div", { class: "toolbar" },
                h("label", { for: "expand-level", class: "inline-label", text: "Expand references" }), expand,
                writable.size ? h("span", { class: "muted small", text: "Edit a highlighted attribute, or double-click its value." }) : null),
            h("table", { class: "attrs", "data-testid": "object-attributes" }, tbody));

        live.watch(address, {
            onData: (message) => {
                const data = message.data || {};
                for (const row of tbody.rows) {
                    const key = row.dataset.attribute;
                    const el = row.querySelector(".value-cell > .value");
                    if (el) {
                        patchValue(el, data[key]);
                    }
                }
            },
            onError: (message) => {
                if (message.code === 410) {
                    main.querySelector(".attrs").classList.add("gone");
                }
            }
        });
    }

    // ---------------------------------------------------------------- start

    window.addEventListener("hashchange", route);
    buildTree();
    live.connect();
    route();
})();
