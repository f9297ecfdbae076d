#!/usr/bin/python3
"""Makes one HTML page of a Markdown document, with its pictures inside and a light and a dark look.

Usage: makeguide.py DOCUMENT PAGE
A link or picture that leads nowhere is an error.
"""
import base64
import pathlib
import re
import sys

import markdown
from markdown.extensions.toc import TocExtension

STYLE = """
:root { color-scheme: light dark; --text: #1d1f21; --page: #fdfdfc; --line: #c8ccd0; --soft: #f0f2f4; --link: #0b5cad; }
@media (prefers-color-scheme: dark) {
  :root { --text: #e3e5e8; --page: #1b1d1f; --line: #494e54; --soft: #282b2f; --link: #79b8ff; }
}
body { max-width: 54em; margin: 2em auto; padding: 0 1em; color: var(--text); background: var(--page);
  font: 16px/1.65 "Microsoft YaHei", "Noto Sans CJK SC", "PingFang SC", sans-serif; }
a { color: var(--link); }
h1, h2, h3 { line-height: 1.3; margin-top: 1.8em; }
img { max-width: 100%; height: auto; border: 1px solid var(--line); }
table { border-collapse: collapse; width: 100%; }
th, td { border: 1px solid var(--line); padding: 0.3em 0.6em; text-align: left; vertical-align: top; }
th, code, pre { background: var(--soft); }
code { padding: 0 0.2em; font-family: Consolas, "Noto Sans Mono CJK SC", monospace; }
pre { padding: 0.6em 0.8em; overflow-x: auto; }
@media print { body { max-width: none; margin: 0; } }
""".strip()

PAGE = """<!DOCTYPE html>
<html lang="zh-CN">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{title}</title>
<style>
{style}
</style>
</head>
<body>
{body}
</body>
</html>
"""


def anchor(heading, _separator):
    """The name by which links in the document call a heading."""
    kept = (c for c in heading if c.isalnum() or c in " -_" or ord(c) >= 0x80)
    return "".join(kept).replace(" ", "-").lower()


def with_pictures(body, folder):
    def embedded(match):
        data = base64.b64encode((folder / match[1]).read_bytes()).decode("ascii")
        return f'src="data:image/png;base64,{data}"'

    return re.sub(r'src="([^"]+\.png)"', embedded, body)


def without_line_breaks(body):
    """Between Chinese characters a line break would show as a blank."""
    chinese = "[\u2e80-\uffef]"
    pieces = re.split(r"(<pre>.*?</pre>)", body, flags=re.DOTALL)
    pieces[::2] = [re.sub(rf"({chinese})\n *(?={chinese})", r"\1", piece) for piece in pieces[::2]]
    return "".join(pieces)


def broken_links(body):
    names = set(re.findall(r'id="([^"]*)"', body))
    return [link for link in re.findall(r'href="([^"]*)"', body)
            if not link.startswith("https://") and link.removeprefix("#") not in names]


def main():
    document, page = map(pathlib.Path, sys.argv[1:3])
    text = document.read_text(encoding="utf-8")
    body = markdown.markdown(text, extensions=["tables", "sane_lists", TocExtension(slugify=anchor)])
    body = with_pictures(without_line_breaks(body), document.parent)
    if links := broken_links(body):
        sys.exit(f"{document}: links that lead nowhere: {', '.join(links)}")
    title = re.search(r"^# (.+)$", text, re.MULTILINE)[1]
    page.write_text(PAGE.format(title=title, style=STYLE, body=body), encoding="utf-8")


if __name__ == "__main__":
    main()
