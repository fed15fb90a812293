"""Writes the code blocks of Markdown files as files of their own: extract_code.py FOLDER FILE...

Prints the names of the files that it made: <document>_<number>.<language>, and <document>_<number>.out for the output
that the block has to have. A C++ or C block without main() gets one around it.
"""

import os
import re
import sys

EXTENSIONS = {"cpp": ".cpp", "c": ".c", "python": ".py", "sh": ".sh", "text": ".out"}
CPP_HEAD = "#include <cstdio>\n#include <zo_video/zo_video.h>\n"
C_HEAD = "#include <stdio.h>\n#include <string.h>\n#include <zo_video_c/zo_video_c.h>\n"


def blocks(text):
    """Language and content of every fenced block."""
    return re.findall(r"^```([a-z]+)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def program(language, code):
    """The block as a whole program."""
    if re.search(r"\bint main\(", code):
        return code
    if language == "cpp":
        return CPP_HEAD + "int main() {\n" + code + "}\n"
    return C_HEAD + "int main(void) {\n" + code + "return 0;\n}\n"


def tool_commands(code):
    """The lines of a shell block that call the tool."""
    return "".join(line + "\n" for line in code.splitlines() if line.startswith("zo-video "))


def extract(path, folder):
    stem = re.sub(r"\W", "_", os.path.splitext(os.path.basename(path))[0]).lower()
    with open(path, encoding="utf-8") as document:
        found = blocks(document.read())
    previous = None
    for number, (language, code) in enumerate(found, 1):
        if language not in EXTENSIONS:
            continue
        if language == "text":
            name = previous and previous + ".out"
        else:
            previous = "%s_%d" % (stem, number)
            name = previous + EXTENSIONS[language]
        if language in ("cpp", "c"):
            code = program(language, code)
        elif language == "sh":
            code = tool_commands(code)
        if not name or not code:
            previous = None if language == "sh" else previous
            continue
        target = os.path.join(folder, name)
        old = None
        if os.path.exists(target):
            with open(target, encoding="utf-8") as existing:
                old = existing.read()
        if old != code:
            with open(target, "w", encoding="utf-8") as new:
                new.write(code)
        yield name


def main():
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    names = [name for path in sys.argv[2:] for name in extract(path, folder)]
    for stale in set(os.listdir(folder)) - set(names):
        os.remove(os.path.join(folder, stale))
    print("\n".join(sorted(names)))


if __name__ == "__main__":
    main()
