#!/usr/bin/env python3
"""code_block.py PAGE LANGUAGE TEXT: the one block of that language on a page that has TEXT."""

import pathlib
import re
import sys

page, language, text = sys.argv[1:]
blocks = re.findall(rf"^```{language}\n(.*?)^```$", pathlib.Path(page).read_text(encoding="utf-8"),
                    re.M | re.S)
found = [block for block in blocks if text in block]
if len(found) != 1:
    sys.exit(f"{page}: {len(found)} blocks of {language} have {text!r}")
print(found[0], end="")
