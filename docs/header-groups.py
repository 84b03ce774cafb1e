#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Doxygen input filter for the headers under include/: every section banner

    /* ==== Family: topic ===== */

opens a Doxygen group for that section (closing the one before), inside a
group per family (the banner text before ':'), so that each section the
header gains is grouped without markup of its own. A plain comment right
after a banner becomes the section's description. Line numbers are kept,
so Doxygen's warnings point at the header's own lines."""
import re
import sys

BANNER = re.compile(r'^/\* =+ (.+?) =+ \*/\s*$')


def slug(text):
    return re.sub(r'[^a-z0-9]+', '_', text.lower()).strip('_')


def main():
    lines = open(sys.argv[1], encoding='utf-8').read().split('\n')
    out = []
    families = []
    open_group = False
    pending = None  # what the line after a banner must start with
    intro = False   # inside a section description comment
    for line in lines:
        m = BANNER.match(line)
        if m:
            title = m.group(1)
            parts = []
            if open_group:
                parts.append('/** @} */')
            # A group's title runs to the end of its line: its @{ and
            # @ingroup go on the next line.
            pending = '@{'
            ingroup = ''
            if ':' in title:
                family = title.split(':')[0].strip()
                if family not in families:
                    families.append(family)
                    parts.append('/** @defgroup %s %s */' % (slug(family), family))
                ingroup = ' @ingroup %s' % slug(family)
            parts.append('/** @defgroup %s %s' % (slug(title), title))
            out.append(' '.join(parts))
            open_group = True
            continue
        if pending is not None and line.strip() != '':
            # Blank lines after a banner stay inside the group's comment.
            if line.startswith('/*') and not line.startswith('/**'):
                # The section's description becomes the group's text.
                intro = True
                line = pending + ' ' + line[2:].lstrip()
            else:
                line = pending + ingroup + ' */ ' + line
            pending = None
        if intro and '*/' in line:
            line = line.replace('*/', ingroup.strip() + ' */', 1) if ingroup else line
            intro = False
        out.append(line)
    if open_group:
        out.append('/** @} */')
    sys.stdout.write('\n'.join(out))


main()
