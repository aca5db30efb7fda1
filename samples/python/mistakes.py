"""Which of many files can be read, and what is wrong in the others: python3 mistakes.py *.amc *.bvh"""

import sys

import qex

for path in sys.argv[1:]:
    messages = qex.check(path)
    errors = [message for message in messages if message.severity == "error"]
    print(f"{path}: {len(errors)} errors, {len(messages) - len(errors)} warnings and notes")
    for message in errors[:3]:
        print("  ", message)
