#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Holds what --json prints against docs/raxel-export.schema.json, with a small validator of its own.

    json_schema.py --build FOLDER --source FOLDER
"""

import json
import os
import subprocess
import sys
import tempfile

import shared

KINDS = {
    "object": lambda v: isinstance(v, dict),
    "array": lambda v: isinstance(v, list),
    "string": lambda v: isinstance(v, str),
    "boolean": lambda v: isinstance(v, bool),
    "integer": lambda v: isinstance(v, int) and not isinstance(v, bool),
    "number": lambda v: isinstance(v, (int, float)) and not isinstance(v, bool),
}
KNOWN = {"$schema", "$defs", "$ref", "title", "description", "type", "required", "properties", "items", "enum",
         "anyOf", "additionalProperties"}


def faults(value, schema, root, at="document"):
    """Yields what breaks the schema. Knows the keywords that the schema uses, and no others."""
    unknown = set(schema) - KNOWN
    if unknown:
        yield f"the schema uses {unknown}, which this validator does not know"
    if "$ref" in schema:
        yield from faults(value, root["$defs"][schema["$ref"].split("/")[-1]], root, at)
    if "anyOf" in schema:
        tries = [list(faults(value, option, root, at)) for option in schema["anyOf"]]
        if all(tries):
            yield from min(tries, key=len)
    if "type" in schema and not KINDS[schema["type"]](value):
        yield f"{at} is no {schema['type']}: {value!r}"
        return
    if "enum" in schema and value not in schema["enum"]:
        yield f"{at} is none of {schema['enum']}: {value!r}"
    if isinstance(value, dict):
        for key in schema.get("required", []):
            if key not in value:
                yield f"{at} has no {key}"
        for key, item in value.items():
            if key in schema.get("properties", {}):
                yield from faults(item, schema["properties"][key], root, f"{at}.{key}")
            elif schema.get("additionalProperties", True) is False:
                yield f"{at} has {key}, which the schema does not know"
    if isinstance(value, list):
        for i, item in enumerate(value):
            yield from faults(item, schema.get("items", {}), root, f"{at}[{i}]")


def main():
    _, source, program = shared.places()
    samples = os.path.join(source, "samples")
    with open(os.path.join(source, "docs/raxel-export.schema.json")) as text:
        schema = json.load(text)
    commands = [
        ["--list"],
        ["--version"],
        ["--help"],
        ["--nonsense"],
        ["missing.png", "out.tif"],
        ["--dry-run", samples + "/photo.png"],
        ["-m", "bilevel", "-c", "g4", "-v", samples + "/photo.png", "out.tif"],
        ["--verify", "-c", "lzw", samples + "/chart4.png", "out.tif"],
        ["--as-is", samples + "/chart4.png", "out.tif"],
        ["--as-is", "--dry-run", samples + "/chart4.png"],
        ["-d", ".", "-j", "2", samples + "/chart4.png", samples + "/chart8.png", "missing.png"],
        ["-c", "t4", samples + "/photo.png", "out.tif"],
        ["--library", "missing.so", samples + "/photo.png", "out.tif"],
        ["--inspect", samples + "/photo.png", "missing.tif", "chart4.tif"],
    ]
    failed = 0
    with tempfile.TemporaryDirectory(prefix="raxel-json-") as folder:
        for command in commands:
            done = subprocess.run([program, "--json"] + command, cwd=folder, capture_output=True, text=True)
            try:
                document = json.loads(done.stdout)
                wrong = list(faults(document, schema, schema))
                if document.get("exit") != done.returncode:
                    wrong.append(f"exit says {document.get('exit')}, the process {done.returncode}")
            except ValueError as error:
                wrong = [f"no JSON: {error}: {done.stdout[:200]!r}"]
            if wrong:
                failed += 1
                print("FAILED", " ".join(command), *wrong, sep="\n  ")
    print(f"json: {len(commands) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
