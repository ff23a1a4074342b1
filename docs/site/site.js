// Light or dark, as the reader's system is.
const dark = matchMedia("(prefers-color-scheme: dark)");
const follow = () => document.body.setAttribute("data-md-color-scheme", dark.matches ? "slate" : "default");
follow();
dark.addEventListener("change", follow);
