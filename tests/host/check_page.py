#!/usr/bin/env python3
"""Checks the page of figures as a text: usage: check_page.py FILE [--sums]

Prints one line for each fault, and nothing for a page without: all elements are closed in their order, identifiers are
unique, references to them lead somewhere, nothing is fetched from elsewhere, tables have captions and headers. With
--sums, for figures written as in English, the columns of a table with a total add up to it.
"""

import html.parser
import re
import sys

VOID = {"meta", "link", "input", "br", "hr", "img"}
SHAPES = {"path", "rect", "circle", "polyline"}
FETCHING = {"src", "href", "srcset", "action", "formaction", "data", "poster", "background", "ping", "xlink:href"}
REFERENCES = {"aria-labelledby", "aria-describedby", "aria-controls", "for"}


class Table:
    def __init__(self, attributes):
        self.classes = (attributes.get("class") or "").split()
        self.hasCaption = False
        self.rows = []  # (part, [(isHeader, text)])


class Checker(html.parser.HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.faults = []
        self.open = []
        self.identifiers = {}
        self.references = []
        self.tables = []
        self.part = ""
        self.cell = None
        self.headings = []
        self.policy = ""
        self.language = ""

    def fault(self, text):
        self.faults.append(f"line {self.getpos()[0]}: {text}")

    def handle_starttag(self, tag, pairs, isClosed=False):
        attributes = dict(pairs)
        if len(attributes) != len(pairs):
            self.fault(f"<{tag}> has an attribute twice")
        self.checkAttributes(tag, attributes)
        if tag in VOID:
            return
        if tag in SHAPES and not isClosed:
            self.fault(f"<{tag}> is not closed")
        if isClosed:
            if tag not in SHAPES:
                self.fault(f"<{tag}/> does not close a <{tag}>")
            return
        self.open.append(tag)
        if tag == "table":
            if self.cell is not None:
                self.fault("a table in a cell")
            self.tables.append(Table(attributes))
        elif tag == "caption":
            self.tables[-1].hasCaption = True
        elif tag in ("thead", "tbody", "tfoot"):
            self.part = tag
        elif tag == "tr":
            self.tables[-1].rows.append((self.part, []))
        elif tag in ("th", "td"):
            if tag == "th" and attributes.get("scope") not in ("row", "col"):
                self.fault("a <th> without a scope")
            self.cell = [tag == "th", ""]

    def handle_startendtag(self, tag, pairs):
        self.handle_starttag(tag, pairs, True)

    def checkAttributes(self, tag, attributes):
        if tag == "html":
            self.language = attributes.get("lang", "")
        if "id" in attributes:
            if attributes["id"] in self.identifiers:
                self.fault(f"the id {attributes['id']} twice")
            self.identifiers[attributes["id"]] = tag
        for name in REFERENCES & attributes.keys():
            self.references += [(self.getpos()[0], name, one) for one in attributes[name].split()]
        for name in FETCHING & attributes.keys():
            value = attributes[name]
            if value.startswith("#"):
                self.references.append((self.getpos()[0], name, value[1:]))
            elif value != "data:,":
                self.fault(f"{name} leads to {value}")
        if any(name.startswith("on") for name in attributes):
            self.fault(f"a handler in the attributes of <{tag}>")
        if tag in ("img", "iframe", "object", "embed", "form", "base"):
            self.fault(f"a <{tag}>")
        if tag == "svg" and attributes.get("role") != "img" and attributes.get("aria-hidden") != "true":
            self.fault("an <svg> that is neither named nor hidden")
        if tag == "svg" and attributes.get("role") == "img" and "aria-labelledby" not in attributes:
            self.fault("an <svg> without a name")
        if tag == "meta" and attributes.get("http-equiv") == "Content-Security-Policy":
            self.policy = attributes["content"]
        if re.fullmatch("h[1-6]", tag):
            self.headings.append(int(tag[1]))

    def handle_endtag(self, tag):
        if not self.open or self.open[-1] != tag:
            self.fault(f"</{tag}> closes <{self.open[-1] if self.open else ''}>")
        elif self.open:
            self.open.pop()
        if tag in ("th", "td") and self.cell is not None:
            self.tables[-1].rows[-1][1].append(tuple(self.cell))
            self.cell = None

    def handle_data(self, data):
        if self.cell is not None:
            self.cell[1] += data


SUFFIXES = {"K": 1e3, "M": 1e6}


def number(text):
    """The value of a figure and the half of its last digit; nothing for a text that is none."""
    match = re.fullmatch(r"\$?([\d,]+)(\.\d+)?([KM])?", text)
    if not match:
        return None
    scale = SUFFIXES.get(match[3], 1)
    decimals = len(match[2]) - 1 if match[2] else 0
    precision = 0 if decimals == 0 and scale == 1 else 0.5 * 10**-decimals * scale
    return float(match[1].replace(",", "") + (match[2] or "")) * scale, precision


def checkSums(table, faults):
    totals = [cells for part, cells in table.rows if part == "tfoot"]
    if not totals or "figures" not in table.classes:
        return 0
    summed = 0
    for column, (_, text) in enumerate(totals[0]):
        total = number(text)
        if column == 0 or total is None:
            continue
        values = [cells[column][1] for part, cells in table.rows if part == "tbody"]
        numbers = [number(value) for value in values if value not in ("–", "no price", "")]
        if None in numbers:
            faults.append(f"a column of {values[:3]} is summed")
            continue
        tolerance = total[1] + sum(precision for _, precision in numbers) + 1e-6
        if abs(sum(value for value, _ in numbers) - total[0]) > tolerance:
            faults.append(f"a column adds up to {sum(value for value, _ in numbers)}, and its total is {text}")
        summed += 1
    return summed


def main():
    text = open(sys.argv[1], encoding="utf-8").read()
    checker = Checker()
    checker.feed(text)
    checker.close()
    faults = checker.faults
    faults += [f"<{tag}> is left open" for tag in checker.open]
    faults += [f"line {line}: {name} names {target}" for line, name, target in checker.references
               if target not in checker.identifiers]
    if not text.startswith("<!DOCTYPE html>"):
        faults.append("no document type")
    if not checker.language:
        faults.append("no language")
    if "default-src 'none'" not in checker.policy:
        faults.append("no policy")
    if checker.headings[:1] != [1] or any(late - early > 1 for early, late in zip(checker.headings, checker.headings[1:])):
        faults.append(f"headings of the levels {checker.headings}")
    summed = 0
    for table in checker.tables:
        if not table.hasCaption:
            faults.append("a table without a caption")
        widths = {len(cells) for _, cells in table.rows}
        if len(widths) != 1:
            faults.append(f"a table with rows of {widths} cells")
        if "--sums" in sys.argv:
            summed += checkSums(table, faults)
    if "--sums" in sys.argv and summed < 10:
        faults.append(f"only {summed} columns have a total")
    for address in re.findall(r"https?://[^\s\"'<]*", re.sub(r"<bdi>.*?</bdi>", "", text)):
        faults.append(f"the address {address}")
    print("\n".join(faults), end="")


main()
