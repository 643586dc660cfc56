#!/usr/bin/env python3
"""Holds the schemas in docs/schemas/ against the samples beside this file.

Of each file kind the folders are

  accepted     the schema and the reader take it
  refused      neither does
  reader-only  the reader takes it, without a word or with a warning, and the schema does
               not: a mistake that would pass unnoticed
  schema-only  the schema takes it, and the reader of this process does not

SamplesTest.cpp holds the reader to the same folders, and that of the open plugin's file
tests/openid/ConfigurationSamplesTest.cpp. Of the documents of the plugin boundary
the folder `written` has what the library writes, and `reader-only-read` what it has read of
each document in `reader-only`. Checked besides: the examples and defaults in the schemas,
and the files that the pages show and the packages deliver.
"""

import json
import pathlib
import re
import sys

try:
    import jsonschema
except ImportError as error:
    print(f"skipped: {error}; scripts/setup installs python3-jsonschema")
    sys.exit(77)

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
KINDS = {"SSOClient": "ssoServer", "SSOVersionCompatibility": "ssoClientPlugin",
         "HxSSOOpenID": "servers"}
FOLDERS = {"accepted": True, "refused": False, "reader-only": False, "schema-only": True}
PAGES = ("README.md", "docs/configuration-files.md", "docs/openid.md")
DELIVERED = {"plugins/openid/HxSSOOpenID.json": "HxSSOOpenID",
             "plugins/openid/SSOVersionCompatibility.config.in": "SSOVersionCompatibility"}
# The documents of the plugin boundary. DocumentsTest.cpp reads and writes them.
DOCUMENTS = ("OAuth2TokenSpec", "OAuth2Token", "NetworkCookie", "NetworkCookieJar")
DOCUMENTS_PAGE = "docs/boundary-documents.md"
DOCUMENT_FOLDERS = {"written": True, "accepted": True, "refused": False, "reader-only": False,
                    "reader-only-read": True}


def without_comments(text):
    """Comments are part of the format, and not of JSON."""
    token = re.compile(r'"(?:[^"\\]|\\.)*"|//[^\n]*|/\*.*?\*/', re.S)
    return token.sub(lambda m: m[0] if m[0].startswith('"') else " ", text)


def problem(validator, text):
    """Why the schema does not take a file, or nothing."""
    try:
        document = json.loads(without_comments(text))
    except ValueError as error:
        return f"no JSON: {error}"
    found = jsonschema.exceptions.best_match(validator.iter_errors(document))
    return found and f"{'/'.join(map(str, found.absolute_path))}: {found.message}"


def check_samples(kind, validator, folders=None):
    for folder, taken in (folders or FOLDERS).items():
        samples = sorted((HERE / kind / folder).glob("*.json"))
        if not samples and folder != "schema-only":
            yield f"{kind}/{folder}: there are no samples", False
        for sample in samples:
            why = problem(validator, sample.read_text(encoding="utf-8"))
            said = f" ({why})" if why else ""
            yield f"{kind}/{folder}/{sample.name}{said}", (not why) == taken


def parts(schema):
    """The schema and all schemas inside it."""
    if isinstance(schema, dict):
        yield schema
        for value in schema.values():
            yield from parts(value)
    elif isinstance(schema, list):
        for value in schema:
            yield from parts(value)


def check_own_values(kind, schema):
    jsonschema.Draft7Validator.check_schema(schema)
    for part in parts(schema):
        whole = {**part, "definitions": schema.get("definitions", {})}
        validator = jsonschema.Draft7Validator(whole)
        values = list(part["examples"]) if isinstance(part.get("examples"), list) else []
        values += [part["default"]] if "default" in part else []
        for value in values:
            yield f"{kind}: {part.get('title')}: {value!r}", validator.is_valid(value)
        # What an editor shows.
        if isinstance(part.get("type"), str) and "title" not in part and part["type"] != "string":
            yield f"{kind}: a {part['type']} without a title", False


def check_pages(validators):
    for page in PAGES:
        path = ROOT / page
        blocks = re.findall(r"^```json\n(.*?)^```", path.read_text(encoding="utf-8"), re.M | re.S)
        shown = 0
        for number, block in enumerate(blocks, 1):
            kind = next((k for k, member in KINDS.items() if f'"{member}"' in block), None)
            if kind:
                shown += 1
                why = problem(validators[kind], block)
                yield f"{page}: JSON block {number}" + (f" ({why})" if why else ""), not why
        yield f"{page}: {shown} files shown", shown > 0


def check_delivered(validators):
    for name, kind in DELIVERED.items():
        why = problem(validators[kind], (ROOT / name).read_text(encoding="utf-8"))
        yield name + (f" ({why})" if why else ""), not why


def with_references(part, schemas):
    """A schema with those that it refers to in the place of the references."""
    if isinstance(part, dict):
        if "$ref" in part:
            return with_references(schemas[part["$ref"].partition(".")[0]], schemas)
        return {key: with_references(value, schemas) for key, value in part.items()}
    if isinstance(part, list):
        return [with_references(value, schemas) for value in part]
    return part


def check_documents():
    """The documents' schemas, of which two refer to others, and the page that shows them."""
    schemas = {kind: json.loads((ROOT / f"docs/schemas/{kind}.schema.json").read_text("utf-8"))
               for kind in DOCUMENTS}
    page = (ROOT / DOCUMENTS_PAGE).read_text(encoding="utf-8")
    for kind, schema in schemas.items():
        whole = with_references(schema, schemas)
        validator = jsonschema.Draft7Validator(whole)
        yield from check_own_values(kind, whole)
        yield from check_samples(f"documents/{kind}", validator, DOCUMENT_FOLDERS)
        example = (HERE / f"documents/{kind}/written/example.json").read_text(encoding="utf-8")
        yield f"{DOCUMENTS_PAGE}: shows {kind}/written/example.json", f"```json\n{example}```" in page


def main():
    results = []
    validators = {}
    for kind in KINDS:
        text = (ROOT / f"docs/schemas/{kind}.schema.json").read_text(encoding="utf-8")
        schema = json.loads(text)
        validators[kind] = jsonschema.Draft7Validator(schema)
        results += [*check_own_values(kind, schema), *check_samples(kind, validators[kind])]
    results += check_pages(validators)
    results += check_delivered(validators)
    results += check_documents()
    for what, good in results:
        if not good:
            print(f"failed: {what}")
    failed = sum(1 for _, good in results if not good)
    print(f"{len(results) - failed} of {len(results)} hold")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
