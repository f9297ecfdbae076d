"""Validates JSON lines against a schema: judge.py SCHEMA. Reads names of files; for each it prints the complaints and a
line with a full stop."""
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
for name in sys.stdin:
    count = 0
    with open(name.rstrip("\n"), encoding="utf-8") as lines:
        for line in lines:
            count += 1
            for error in validator.iter_errors(json.loads(line)):
                print(f"line {count}, {error.json_path}: {error.message}")
    if count == 0:
        print("no line to judge")
    print(".", flush=True)
