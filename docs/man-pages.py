#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""man-pages.py <include dir> <output dir> <version> <changelog> [section 1 pages...]

Section 3 manual pages from the headers' doc comments, compressed as Debian
installs them: one page per function, or one per @name group (named after
its first function) with a ".so" page for each other member. The page date
is the packaging changelog's, so that a rebuild gives the same bytes. The
hand-written section 1 pages named after them are compressed alongside."""
import email.utils
import gzip
import os
import re
import shutil
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import header_doc  # noqa: E402

TITLE = 'libqvs_utils manual'
SECTION_NAMES = {'Touches': 'TOUCHES'}


def esc(text):
    """Roff text: backslashes escaped, `code` in italics, hyphens kept as
    minus signs where they read as options or numbers."""
    text = text.replace('\\', '\\e')
    text = re.sub(r'`([^`]+)`', lambda m: '\\fI' + m.group(1) + '\\fP', text)
    text = re.sub(r'(^|[\s(])-(?=[0-9A-Za-z])', r'\1\\-', text)
    return text


def line(text):
    """One roff text line; a leading dot or quote would be a request."""
    text = text.strip()
    if text.startswith('.') or text.startswith("'"):
        text = '\\&' + text
    return text


def flow(lines):
    """Lines joined into filled text, keeping bullet lists ("- ") and
    indented blocks (kept as they are, without filling)."""
    out = []
    mode = 'text'
    for raw in lines:
        if raw.strip() == '':
            if mode == 'pre':
                out.append('.fi')
                out.append('.in')
            if out and out[-1] != '.PP':
                out.append('.PP')
            mode = 'text'
            continue
        if raw.startswith('- '):
            if mode == 'pre':
                out += ['.fi', '.in']
            out.append('.IP \\(bu 2')
            out.append(line(esc(raw[2:])))
            mode = 'item'
        elif raw.startswith(' ') and mode != 'item':
            # Kept as laid out: the block's own indentation goes, the
            # lines' relative indentation stays.
            if mode != 'pre':
                out += ['.PP', '.in +4n', '.nf']
                mode = 'pre'
                base = len(raw) - len(raw.lstrip())
            cut = min(base, len(raw) - len(raw.lstrip()))
            out.append('\\&' + esc(raw[cut:].rstrip()))
        else:
            if mode == 'pre':
                out += ['.fi', '.in', '.PP']
                mode = 'text'
            out.append(line(esc(raw)))
    if mode == 'pre':
        out += ['.fi', '.in']
    while out and out[-1] == '.PP':
        out.pop()
    while out and out[0] == '.PP':
        out.pop(0)
    return out


def first_sentence(lines):
    text = ' '.join(x.strip() for x in lines if x.strip())
    m = re.search(r'^(.+?[.:])(\s|$)', text)
    sentence = m.group(1) if m else text
    return sentence.rstrip('.:').replace('`', '')


def page(entry, include_dir, version, date, siblings):
    name = entry.names[0]
    parts = header_doc.paragraphs(entry.doc)
    description = [p for p in parts if p[0] == '']
    params = [p for p in parts if p[0] == 'param']
    returns = [p for p in parts if p[0] == 'return']
    pars = [p for p in parts if p[0] == 'par']
    desc_lines = description[0][2] if description else []
    out = ['.TH %s 3 "%s" "libqvs_utils %s" "%s"' % (name, date, version, TITLE)]
    # Long identifiers: left-adjusted text without hyphenation reads (and
    # fits) better than stretched lines.
    out += ['.ad l', '.nh']
    out += ['.SH NAME', '%s \\- %s' % (', '.join(entry.names), esc(first_sentence(desc_lines)))]
    out += ['.SH LIBRARY', 'libqvs_utils (\\fI\\-lqvs_utils\\fP)']
    out += ['.SH SYNOPSIS', '.nf', '.B #include <qvs_utils.h>', '.PP']
    for proto in entry.prototypes:
        out.append(line(esc(proto)))
    out += ['.fi', '.SH DESCRIPTION']
    out += flow(desc_lines)
    # Where to look in the headers: the family header and its section.
    header = os.path.relpath(entry.header, include_dir)
    where = 'Declared in \\fI<%s>\\fP' % header
    if header != 'qvs_utils.h':
        where += ', which \\fI<qvs_utils.h>\\fP includes'
    if entry.section:
        where += ', section \\(lq%s\\(rq' % esc(entry.section)
    out += ['.PP', where + '.']
    arguments = [p for p in pars if p[1].startswith('Argument')]
    if params or arguments:
        out.append('.SS Arguments')
        for _, _, lines in params:
            text = ' '.join(x.strip() for x in lines)
            arg, _, rest = text.partition(' ')
            out += ['.TP', '.I %s' % arg, line(esc(rest.strip()))]
        for _, _, lines in arguments:
            out += ['.PP'] + flow([' '.join(x.strip() for x in lines)])
    if returns:
        out.append('.SH RETURN VALUE')
        for _, _, lines in returns:
            out += flow([' '.join(x.strip() for x in lines)])
    for _, title, lines in pars:
        if title.startswith('Argument') or title == 'Thread safety':
            continue
        out.append('.SH %s' % SECTION_NAMES.get(title, title.upper()))
        out += flow([' '.join(x.strip() for x in lines)])
    safety = header_doc.thread_safety(entry.doc)
    if safety:
        level, _, why = safety.partition(': ')
        out += ['.SH ATTRIBUTES', 'For the terms used here, see', '.BR attributes (7).',
                '.TP', '.B Thread safety', line(esc(level.rstrip('.')))]
        if why:
            out += ['.br', line(esc(why))]
    others = [s for s in siblings if s not in entry.names]
    out.append('.SH SEE ALSO')
    refs = ['.BR %s (3),' % s for s in others] + ['.BR qvs_utils (3),', '.BR attributes (7)']
    out += refs
    return '\n'.join(out) + '\n'


def overview(entries, include_dir, version, date):
    """qvs_utils(3): the library-wide notes of qvs_utils.h, then each family
    header with its sections and functions."""
    out = ['.TH qvs_utils 3 "%s" "libqvs_utils %s" "%s"' % (date, version, TITLE), '.ad l', '.nh',
           '.SH NAME', 'qvs_utils \\- the home gateway\'s shared utility library, by family',
           '.SH LIBRARY', 'libqvs_utils (\\fI\\-lqvs_utils\\fP)',
           '.SH SYNOPSIS', '.nf', '.B #include <qvs_utils.h>', '.fi', '.SH DESCRIPTION']
    out += flow(header_doc.file_comment(os.path.join(include_dir, 'qvs_utils.h'))[1:])
    out.append('.SH HEADERS')
    for h in header_doc.headers(include_dir)[1:]:
        mine = [e for e in entries if e.header == h and e.names]
        if not mine:
            continue
        out += ['.SS <%s>' % os.path.relpath(h, include_dir)]
        sections = []
        for e in mine:
            if e.section not in sections:
                sections.append(e.section)
        for s in sections:
            names = [n for e in mine if e.section == s for n in e.names]
            out += ['.TP', esc(s), ', '.join('\\fB%s\\fP(3)' % n for n in names)]
    out += ['.SH SEE ALSO', '.BR qvsctl (1),', '.BR attributes (7)']
    return '\n'.join(out) + '\n'


def write_gz(path, text):
    # mtime 0 and no file name: the same bytes on every build.
    with open(path, 'wb') as raw:
        with gzip.GzipFile(filename='', mode='wb', fileobj=raw, compresslevel=9, mtime=0) as f:
            f.write(text.encode('utf-8'))


def changelog_date(path):
    for text in open(path, encoding='utf-8'):
        m = re.match(r'^ -- .*?  (.+)$', text.rstrip('\n'))
        if m:
            return email.utils.parsedate_to_datetime(m.group(1)).strftime('%Y-%m-%d')
    raise SystemExit('man-pages: no date in %s' % path)


def main():
    include_dir, out_dir, version, changelog = sys.argv[1:5]
    date = changelog_date(changelog)
    entries = header_doc.all_entries(include_dir)
    man3 = os.path.join(out_dir, 'man3')
    shutil.rmtree(man3, ignore_errors=True)
    os.makedirs(man3)
    by_section = {}
    for e in entries:
        by_section.setdefault(e.section, []).extend(e.names)
    pages = links = 0
    for e in entries:
        if not e.names:
            continue
        write_gz(os.path.join(man3, e.names[0] + '.3.gz'), page(e, include_dir, version, date, by_section[e.section]))
        pages += 1
        for other in e.names[1:]:
            write_gz(os.path.join(man3, other + '.3.gz'), '.so man3/%s.3\n' % e.names[0])
            links += 1
    write_gz(os.path.join(man3, 'qvs_utils.3.gz'), overview(entries, include_dir, version, date))
    pages += 1
    man1 = os.path.join(out_dir, 'man1')
    shutil.rmtree(man1, ignore_errors=True)
    os.makedirs(man1)
    for source in sys.argv[5:]:
        write_gz(os.path.join(man1, os.path.basename(source) + '.gz'), open(source, encoding='utf-8').read())
    print('man-pages: %d pages and %d links in %s, %d in %s' % (pages, links, man3, len(sys.argv[5:]), man1))


main()
