#!/usr/bin/env python3
"""Compares two JSON documents: same_json.py BOUND FILE FILE.

Both must have the same structure and texts, and the difference between two corresponding numbers must not exceed BOUND.
If the larger absolute value of the two numbers is more than 1, the difference is divided by this value first. "\\" and
"/" are the same in texts, because both separate folders on Windows. Prints the largest difference.
"""
import json
import sys

bound, *files = sys.argv[1:]
largest = (0, '', 0, 0)


def compare(a, b, path):
    global largest
    if isinstance(a, dict) and isinstance(b, dict) and list(a) == list(b):
        for key in a:
            compare(a[key], b[key], f'{path}/{key}')
    elif isinstance(a, list) and isinstance(b, list) and len(a) == len(b):
        for i in range(len(a)):
            compare(a[i], b[i], f'{path}/{i}')
    elif type(a) in (int, float) and type(b) in (int, float):
        largest = max(largest, (abs(a - b) / max(1, abs(a), abs(b)), path, a, b))
    elif str(a).replace('\\', '/') != str(b).replace('\\', '/'):
        sys.exit(f'FAILED: {files[0]}: {path} is {str(a)[:200]} and {str(b)[:200]}')


compare(*(json.load(open(file, encoding='utf-8')) for file in files), '')
print(f'{files[0]}: largest difference {largest[0]:.2g}'
      + (f' ({largest[1]}: {largest[2]} and {largest[3]})' if largest[0] else ''))
if largest[0] > float(bound):
    sys.exit(f'FAILED: {files[0]}: more than {bound}')
