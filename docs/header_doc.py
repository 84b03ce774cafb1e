# SPDX-License-Identifier: MIT
"""Reads the exported headers' doc comments: which function is declared
where, under which section banner, with which /** ... */ comment. Shared by
the manual page generator (docs/man-pages.py) and the thread-safety check
(tests/docs/check-thread-safety.py), so both see the header alike.

A section is its banner (/* ==== Family: topic ==== */). A declaration
takes the /** ... */ comment right before it; the functions of a
/** @name a, b @{ */ ... /** @} */ group share the one comment inside it."""
import glob
import os
import re

BANNER = re.compile(r'^/\* =+ (.+?) =+ \*/\s*$')
FUNCTION = re.compile(r'^QVS_API\s')
NAME_BEFORE_PAREN = re.compile(r'([A-Za-z_][A-Za-z0-9_]*)\s*\(')
ATTRIBUTE = re.compile(r'\s*__attribute__\s*\(\(.*\)\)')
ASM_LABEL = re.compile(r'\s*__asm__\s*\(\s*"([A-Za-z_][A-Za-z0-9_]*)"\s*\)')


class Entry:
    """One documented unit: a function, or a @name group of functions
    sharing one comment."""

    def __init__(self, header, section, doc, group):
        self.header = header      # path of the header
        self.section = section    # banner title
        self.doc = doc            # comment text, lines without the ' * '
        self.group = group        # True for a @name group
        self.names = []           # functions, in declaration order
        self.prototypes = []      # their declarations, one line each


def headers(include_dir):
    """The umbrella header, then the family headers in the order it
    includes them (any other header under qvs_utils/ after them)."""
    umbrella = os.path.join(include_dir, 'qvs_utils.h')
    found = [umbrella]
    for line in open(umbrella, encoding='utf-8'):
        m = re.match(r'^#include "(qvs_utils/[^"]+)"', line)
        if m:
            found.append(os.path.join(include_dir, m.group(1)))
    for f in sorted(glob.glob(os.path.join(include_dir, 'qvs_utils', '*.h'))):
        if f not in found:
            found.append(f)
    return [f for f in found if os.path.isfile(f)]


def comment_text(lines):
    """The text of a /** ... */ comment, one entry per source line."""
    text = []
    for i, line in enumerate(lines):
        s = line.strip()
        if i == 0:
            s = s[3:].lstrip()
        elif s.startswith('*') and not s.startswith('*/'):
            s = s[1:]
            if s.startswith(' '):
                s = s[1:]
        if s.rstrip().endswith('*/'):
            s = s.rstrip()[:-2]
        text.append(s.rstrip())
    return text


def parse(path):
    """Entries of one header, in order."""
    lines = open(path, encoding='utf-8').read().split('\n')
    entries = []
    section = None
    doc = None          # the last /** */ comment not yet used
    group = None        # the open @name group's entry
    group_pending = False
    i = 0
    while i < len(lines):
        line = lines[i]
        m = BANNER.match(line)
        if m:
            section = m.group(1)
            doc = None
            i += 1
            continue
        if line.lstrip().startswith('/**'):
            block = [line]
            while '*/' not in block[-1][3 if len(block) == 1 else 0:]:
                i += 1
                block.append(lines[i])
            text = comment_text(block)
            joined = ' '.join(t.strip() for t in text).strip()
            if joined.startswith('@name'):
                group_pending = True
                group = None
            elif joined == '@}':
                group = None
                group_pending = False
            elif group_pending:
                group = Entry(path, section, text, True)
                entries.append(group)
                group_pending = False
            else:
                doc = text
            i += 1
            continue
        if FUNCTION.match(line):
            decl = line
            while ';' not in decl:
                i += 1
                decl += ' ' + lines[i].strip()
            decl = decl[:decl.index(';')]
            decl = ATTRIBUTE.sub('', re.sub(r'\s+', ' ', decl)).strip()
            # A declaration with an assembler label is the other alternative
            # of a preprocessor choice (a 64-bit time caller reaching the
            # 64-bit twin, declared on its own): the comment above it belongs
            # to the plain declaration that follows.
            if ASM_LABEL.search(decl):
                i += 1
                continue
            decl = re.sub(r'^QVS_API ', '', decl) + ';'
            name = NAME_BEFORE_PAREN.search(decl).group(1)
            if group is not None:
                entry = group
            else:
                entry = Entry(path, section, doc or [], False)
                entries.append(entry)
                doc = None
            entry.names.append(name)
            entry.prototypes.append(decl)
        i += 1
    return entries


def all_entries(include_dir):
    entries = []
    for h in headers(include_dir):
        entries += parse(h)
    return entries


def file_comment(path):
    """The lines of the plain comment a header opens with."""
    lines = open(path, encoding='utf-8').read().split('\n')
    if not lines or lines[0].strip() != '/*':
        return []
    text = []
    for line in lines[1:]:
        if line.strip() == '*/':
            break
        text.append(line[3:] if line.startswith(' * ') else '')
    return text


def paragraphs(doc):
    """Splits a comment into (command, title, lines): command '' for the
    description before any command, else 'param', 'return' or 'par' (with
    the paragraph's title)."""
    parts = [['', '', []]]
    for line in doc:
        s = line.strip()
        if s.startswith('@param '):
            parts.append(['param', '', [s[len('@param '):]]])
        elif s.startswith('@return'):
            parts.append(['return', '', [s[len('@return'):].strip()]])
        elif s.startswith('@par '):
            parts.append(['par', s[len('@par '):].strip(), []])
        elif s in ('@{', '@}'):
            continue
        else:
            parts[-1][2].append(line)
    return [tuple(p) for p in parts if p[0] or any(x.strip() for x in p[2])]


def thread_safety(doc):
    """The text of the comment's "@par Thread safety" paragraph, or None."""
    for command, title, lines in paragraphs(doc):
        if command == 'par' and title == 'Thread safety':
            return ' '.join(x.strip() for x in lines if x.strip())
    return None
