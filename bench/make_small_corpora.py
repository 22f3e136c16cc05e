#!/usr/bin/env python3
"""Cuts the small corpora of bench/data out of the full files.

    bench/make_small_corpora.py FOLDER

FOLDER holds twitter.json, citm_catalog.json and canada.json, as JSON libraries are usually measured
with them. The excerpts keep the shape of the files: their indentation, the mix of kinds, and every
number letter for letter.
"""

import json
import pathlib
import re
import sys

TWEETS = 14
EVENTS = 30
PERFORMANCES = 9
POLYGONS = 60
POINTS = 150

MARK = "\x01"


def load(path):
    """Numbers with a fraction become marked texts, so that no digit changes on the way."""
    return json.loads(path.read_text("utf-8"), parse_float=lambda text: MARK + text)


def dump(tree, **style):
    text = json.dumps(tree, ensure_ascii=False, **style)
    return re.sub(r'"\\u0001([^"]*)"', r"\1", text)


def twitter(source):
    tree = load(source)
    tree["statuses"] = tree["statuses"][:TWEETS]
    return dump(tree, indent=2)


def citm_catalog(source):
    tree = load(source)
    tree["events"] = dict(list(tree["events"].items())[:EVENTS])
    tree["performances"] = tree["performances"][:PERFORMANCES]
    return dump(tree, indent=4)


def canada(source):
    tree = load(source)
    geometry = tree["features"][0]["geometry"]
    geometry["coordinates"] = [ring[:POINTS] for ring in geometry["coordinates"][:POLYGONS]]
    return dump(tree, separators=(",", ":"))


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    source = pathlib.Path(sys.argv[1])
    target = pathlib.Path(__file__).parent / "data"
    for cut in (twitter, citm_catalog, canada):
        name = cut.__name__ + ".json"
        text = cut(source / name) + "\n"
        (target / name).write_text(text, "utf-8")
        print(f"{name}: {len(text.encode('utf-8'))} bytes")


if __name__ == "__main__":
    main()
