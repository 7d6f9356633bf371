"""Holds JSON against a schema, by the words of JSON Schema that ours use; any other word is an error. The
order of members counts, too."""
import re

KNOWN = {"$ref", "const", "enum", "type", "pattern", "minimum", "maximum", "items", "minItems",
         "maxItems", "properties", "additionalProperties", "required"}
WORDS = {"$schema", "$id", "$defs", "title", "description"}
TYPES = {
    "object": lambda v: isinstance(v, dict),
    "array": lambda v: isinstance(v, list),
    "string": lambda v: isinstance(v, str),
    "boolean": lambda v: isinstance(v, bool),
    "integer": lambda v: isinstance(v, int) and not isinstance(v, bool),
    "number": lambda v: isinstance(v, (int, float)) and not isinstance(v, bool),
    "null": lambda v: v is None,
}


class Checker:
    def __init__(self, schema):
        self.schema = schema

    def faults(self, value, rule=None, at="$"):
        """What of `value` breaks `rule`, one text each."""
        rule = self.schema if rule is None else rule
        unknown = set(rule) - KNOWN - WORDS
        if unknown:
            raise SystemExit(f"the checker does not know {unknown}")
        if "$ref" in rule:
            name = rule["$ref"].removeprefix("#/$defs/")
            yield from self.faults(value, self.schema["$defs"][name], at)
        if "const" in rule and value != rule["const"]:
            yield f"{at}: is not {rule['const']!r}"
        if "enum" in rule and not any(v is value or (v == value and type(v) is type(value))
                                      for v in rule["enum"]):
            yield f"{at}: {value!r} is none of {rule['enum']}"
        types = rule.get("type", [])
        types = [types] if isinstance(types, str) else types
        if types and not any(TYPES[t](value) for t in types):
            yield f"{at}: {value!r} is no {types}"
        if isinstance(value, str) and not re.search(rule.get("pattern", ""), value):
            yield f"{at}: {value!r} does not match"
        if TYPES["integer"](value):
            if not rule.get("minimum", value) <= value <= rule.get("maximum", value):
                yield f"{at}: {value} is out of range"
        if isinstance(value, list) and not (
                rule.get("minItems", 0) <= len(value) <= rule.get("maxItems", len(value))):
            yield f"{at}: {len(value)} elements"
        if isinstance(value, list) and "items" in rule:
            for i, one in enumerate(value):
                yield from self.faults(one, rule["items"], f"{at}[{i}]")
        if isinstance(value, dict) and "properties" in rule:
            yield from self.members(value, rule, at)
        if isinstance(value, dict) and "additionalProperties" in rule:
            for name, one in value.items():
                yield from self.faults(one, rule["additionalProperties"], f"{at}.{name}")

    def members(self, value, rule, at):
        """They stand in the order of the schema, and none that is unknown or required is missing."""
        known = [name for name in rule["properties"] if name in value]
        if list(value) != known:
            yield f"{at}: members {list(value)}, expected of {list(rule['properties'])}"
        for name in rule["required"]:
            if name not in value:
                yield f"{at}: no {name}"
        for name, one in value.items():
            if name in rule["properties"]:
                yield from self.faults(one, rule["properties"][name], f"{at}.{name}")


def broken(data, chance):
    """`data` cut, and with up to four bytes changed."""
    yield b""
    for _ in range(60):
        yield data[:chance.randrange(len(data))]
    for _ in range(400):
        changed = bytearray(data)
        for _ in range(chance.randrange(1, 5)):
            changed[chance.randrange(len(data))] = chance.randrange(256)
        yield bytes(changed)
