// Lets the search work where the pages are opened as files. A browser then neither fetches the index nor starts a
// worker, so the index is a script, and the worker's script runs in a frame of the page. Loaded before the theme's own.
if (location.protocol === "file:") {
    const base = JSON.parse(document.getElementById("__config").text).base;

    document.getElementById("__search").index = new Promise((resolve) => {
        const script = document.createElement("script");
        script.src = `${base}/search/search_index.js`;
        script.onload = () => resolve(searchIndex);
        document.head.append(script);
    });

    window.Worker = class extends EventTarget {
        constructor(url) {
            super();
            const frame = document.createElement("iframe");
            frame.hidden = true;
            frame.srcdoc = "<!doctype html>";
            this.inside = new Promise((resolve) => {
                frame.onload = () => {
                    const inside = frame.contentWindow;
                    inside.postMessage = (data) => this.dispatchEvent(new MessageEvent("message", { data }));
                    const script = inside.document.createElement("script");
                    script.src = new URL(url, location);
                    script.onload = () => resolve(inside);
                    inside.document.body.append(script);
                };
            });
            document.body.append(frame);
        }
        async postMessage(data) {
            (await this.inside).dispatchEvent(new MessageEvent("message", { data }));
        }
    };
}
