#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""check-thread-safety.py <include dir> <symbol-list dir>

Every exported function of the library is declared in the headers, and its
reference carries a thread-safety line in glibc's terms:

    @par Thread safety
    MT-Safe.                                  (nothing more to say)
    MT-Safe env: <why>.                       (annotated: the reason follows)
    MT-Unsafe race:<name>: <why>.             (always with a reason)

Exported functions are the names of abi/symbols/*.txt, less cJSON's and
MD5's (documented by their own headers) and less the exported tables, which
the headers declare as extern data."""
import os
import re
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'docs'))
import header_doc  # noqa: E402

THIRD_PARTY_LISTS = {'cjson.txt', 'md5.txt'}
KEYWORD = r'(?:race:[A-Za-z_][A-Za-z0-9_]*|sig:[A-Z0-9]+|env|locale|init|timer|term|const:[a-z_]+|heap|lock|fd|mem|corrupt)'
LINE = re.compile(r'^(MT-Safe|MT-Unsafe)((?: ' + KEYWORD + r')*)(\.|: \S.*)$')
DATA = re.compile(r'^extern QVS_API [^(]*?\b([A-Za-z_][A-Za-z0-9_]*)\s*(?:\[[^]]*\])?\s*;')


def exported_functions(include_dir, lists_dir):
    names = set()
    for f in sorted(os.listdir(lists_dir)):
        if f.endswith('.txt') and f not in THIRD_PARTY_LISTS:
            for line in open(os.path.join(lists_dir, f)):
                if re.match(r'^[A-Za-z_][A-Za-z0-9_]*$', line.strip()):
                    names.add(line.strip())
    data = set()
    for h in header_doc.headers(include_dir):
        for line in open(h, encoding='utf-8'):
            m = DATA.match(line)
            if m:
                data.add(m.group(1))
    return names - data, data


def main():
    include_dir, lists_dir = sys.argv[1], sys.argv[2]
    expected, data = exported_functions(include_dir, lists_dir)
    failures = []
    declared = {}
    for entry in header_doc.all_entries(include_dir):
        for name in entry.names:
            declared[name] = entry
    for name in sorted(expected - set(declared)):
        failures.append('%s: exported but declared in no header' % name)
    for name in sorted(set(declared) - expected):
        failures.append('%s: declared but not in abi/symbols' % name)
    counts = {'MT-Safe': 0, 'MT-Unsafe': 0}
    for name in sorted(set(declared) & expected):
        entry = declared[name]
        text = header_doc.thread_safety(entry.doc)
        where = '%s (%s)' % (name, os.path.basename(entry.header))
        if text is None:
            failures.append('%s: no "@par Thread safety" paragraph' % where)
            continue
        m = LINE.match(text)
        if m is None:
            failures.append('%s: thread-safety line not in glibc\'s form: %s' % (where, text))
            continue
        level, keywords, rest = m.groups()
        if level == 'MT-Unsafe' and not keywords:
            failures.append('%s: MT-Unsafe without the reason\'s keyword (race:..., sig:..., env...)' % where)
        if keywords and rest == '.':
            failures.append('%s: "%s%s" needs its explanation after a colon' % (where, level, keywords))
        counts[level] += 1
    for f in failures:
        print('check-thread-safety: ' + f)
    print('check-thread-safety: %d exported functions (%d MT-Safe, %d MT-Unsafe), %d tables left aside; %s'
          % (len(expected), counts['MT-Safe'], counts['MT-Unsafe'], len(data), 'FAILED' if failures else 'ok'))
    return 1 if failures or not expected else 0


sys.exit(main())
