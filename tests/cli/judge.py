"""Validates JSON lines against a schema: judge.py SCHEMA LINES. Prints what is wrong; code 1 then."""
import json
import sys

try:
    import jsonschema
except ImportError:
    sys.exit("the Python module jsonschema is missing: install python3-jsonschema")

with open(sys.argv[1], encoding="utf-8") as file:
    schema = json.load(file)
jsonschema.Draft202012Validator.check_schema(schema)
validator = jsonschema.Draft202012Validator(schema)
count = 0
bad = False
with open(sys.argv[2], encoding="utf-8") as lines:
    for line in lines:
        count += 1
        for error in validator.iter_errors(json.loads(line)):
            bad = True
            print(f"line {count}, {error.json_path}: {error.message}")
if count == 0:
    sys.exit("no line to judge")
sys.exit(1 if bad else 0)
