"""The blocks of code of a page."""

import re


def blocks(path, language):
    return re.findall(rf"^```{language}\n(.*?)^```$", path.read_text(encoding="utf-8"), re.DOTALL | re.MULTILINE)
