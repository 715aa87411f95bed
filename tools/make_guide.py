#!/usr/bin/env python3
"""Makes the help page of the window of docs/guide.md: make_guide.py [--check]

--check: ends with 1 when share/ReadMe.htm is not what the guide says now.
"""

import html
import os
import re
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PAGE = os.path.join(ROOT, "share/ReadMe.htm")


def inline(text):
    text = html.escape(text, quote=False)
    text = re.sub(r"`([^`]+)`", r"<code>\1</code>", text)
    text = re.sub(r"\*\*([^*]+)\*\*", r"<strong>\1</strong>", text)
    text = re.sub(r"\*([^*]+)\*", r"<b>\1</b>", text)
    # What links to another document of the source tree is text here.
    return re.sub(r"\[([^\]]+)\]\((\S+?)\)", r"\1", text)


def anchor(title):
    return re.sub(r"[^a-z]+", "-", title.lower()).strip("-")


def table(lines):
    rows = [[inline(cell.strip()) for cell in line.strip("|").split("|")] for line in lines]
    cells = lambda row, tag: "".join(f"<{tag}>{cell}</{tag}>" for cell in row)
    body = "\n".join(f"<tr>{cells(row, 'td')}</tr>" for row in rows[2:])
    return f"<table>\n<thead><tr>{cells(rows[0], 'th')}</tr></thead>\n<tbody>\n{body}\n</tbody>\n</table>"


def block(text):
    if text.startswith("```"):
        return f"<pre><code>{html.escape(text[4:-4], quote=False)}</code></pre>"
    if text.startswith("|"):
        return table(text.split("\n"))
    if picture := re.fullmatch(r"!\[(.*)\]\((.*)\)", text):
        words, file = html.escape(picture[1]), os.path.basename(picture[2])
        return f'<figure><img src="ReadMe/{file}" alt="{words}"><figcaption>{words}</figcaption></figure>'
    if re.match(r"\d\. ", text):
        entries = re.split(r"\n(?=\d\. )", text)
        return "<ol>\n" + "\n".join(f"<li>{inline(' '.join(e[3:].split()))}</li>" for e in entries) + "\n</ol>"
    return f"<p>{inline(' '.join(text.split()))}</p>"


def page():
    with open(os.path.join(ROOT, "docs/guide.md"), encoding="utf-8") as file:
        guide = file.read()
    with open(os.path.join(ROOT, "share/ReadMe/page.css"), encoding="utf-8") as file:
        style = file.read().strip()
    head, *sections = re.split(r"^## ", guide, flags=re.MULTILINE)
    title, lead = head.removeprefix("# ").strip().split("\n\n")
    titles = [section.split("\n", 1)[0] for section in sections]
    links = "\n".join(f'<li><a href="#{anchor(t)}">{inline(t)}</a></li>' for t in titles)
    parts = [f'<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n<meta name="viewport" '
             f'content="width=device-width, initial-scale=1">\n<title>{inline(title)}</title>\n<style>\n{style}\n</style>\n'
             f"</head>\n<body>\n<header><h1>{inline(title.split(':')[0])}</h1>\n<p>{inline(lead)}</p></header>\n"
             f'<nav aria-label="Contents">\n<ul>\n{links}\n</ul>\n</nav>\n<main>']
    for section in sections:
        name, text = section.split("\n", 1)
        parts.append(f'<h2 id="{anchor(name)}">{inline(name)}</h2>')
        blocks = re.findall(r"```\n.*?\n```|(?:(?!```)[^\n]+\n?)+", text, re.DOTALL)
        parts += [block(b.strip()) for b in blocks]
    return "\n".join(parts) + "\n</main>\n</body>\n</html>\n"


def main():
    text = page()
    if "--check" in sys.argv[1:]:
        with open(PAGE, encoding="utf-8") as file:
            if file.read() != text:
                sys.exit("share/ReadMe.htm is not what docs/guide.md says: run tools/make_guide.py.")
        return
    with open(PAGE, "w", encoding="utf-8") as file:
        file.write(text)


if __name__ == "__main__":
    main()
