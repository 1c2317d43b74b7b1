#!/usr/bin/env python3
"""Filter for Doxygen: repeats a comment for each declaration of its group.

In the headers a comment is for all declarations that follow it, up to a blank line, another comment
or the end of the class; Doxygen takes it for the first one only. Destructors and what is deleted
speak for themselves."""

import re
import sys

NO_DECLARATION = re.compile(r"\s*(#|}|(public|protected|private):|namespace |extern |using namespace )")
NO_COMMENT = re.compile(r"= delete;|^\s*(virtual )?~")


def filtered(lines):
    comment, pending, depth = [], [], 0
    start_depth = None  # of the declaration that is being read
    for line in lines:
        stripped = line.strip()
        if start_depth is None:
            if stripped.startswith("///"):
                pending.append(line)
                yield line
                continue
            if pending:
                comment, pending = pending, []
            elif not stripped or stripped.startswith("//") or NO_DECLARATION.match(line):
                comment = []
            elif comment and not NO_COMMENT.search(line):
                yield from comment
            if stripped and not stripped.startswith("//") and not NO_DECLARATION.match(line):
                start_depth = depth
        code = re.sub(r'"(\\.|[^"\\])*"|//.*', "", line)
        depth += code.count("{") - code.count("}")
        yield line
        if start_depth is None:
            continue
        opens_class = depth > start_depth and re.match(r"\s*(template.*>\s*)?(class|struct|enum)\b",
                                                       line)
        if opens_class:
            comment, start_depth = [], None
        elif depth == start_depth and re.search(r"[;}]\s*$", code):
            start_depth = None


sys.stdout.writelines(filtered(open(sys.argv[1], encoding="utf-8")))
