#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""CycloneDX 1.5 SBOMs of the two Debian packages of one architecture.

Run by CPack between staging the packages and building them
(cmake/sbom-prebuild.cmake.in), so every hash is of the bytes the package
ships (the stripped library included). Writes <package>.cdx.json for
libqvs-utils1 and libqvs-utils-dev into the -dev package's documentation
folder. The compiled-in sources come from the build: the files CMake
compiled, the Debian source package they were unpacked from (name and
version from its changelog, its .dsc and the checksums the .dsc pins), and
their licence from that package's machine-readable copyright file. The C
library is the runtime package's Depends field (dpkg-shlibdeps) and the
libc6 the build linked against.

Same inputs, same bytes: the time stamp is SOURCE_DATE_EPOCH, the serial
number a UUID derived from the content, every list sorted.
"""
import argparse
import fnmatch
import hashlib
import json
import os
import re
import subprocess
import sys
import uuid
from datetime import datetime, timezone

# Debian copyright short names -> SPDX identifiers the schema knows.
SPDX_OF_DEBIAN = {"Expat": "MIT", "MIT": "MIT", "BSD-3-clause": "BSD-3-Clause", "ISC": "ISC",
                  "BSD-2-clause": "BSD-2-Clause", "LGPL-2.1+": "LGPL-2.1-or-later"}
SUPPLIER = {"name": "qvs_utils maintainers", "contact": [{"email": "qvs-utils@example.com"}]}


def sha256(path):
    h = hashlib.sha256()
    with open(path, "rb") as f:
        for block in iter(lambda: f.read(1 << 16), b""):
            h.update(block)
    return h.hexdigest()


def deb822(path):
    """Paragraphs of a Debian control-style file as lists of (field, value)."""
    paras, cur, field = [], [], None
    with open(path, encoding="utf-8") as f:
        for line in f:
            line = line.rstrip("\n")
            if not line.strip():
                if cur:
                    paras.append(cur)
                cur, field = [], None
            elif line[0] in " \t" and field is not None:
                cur[-1] = (field, cur[-1][1] + "\n" + line[1:])
            else:
                field, _, value = line.partition(":")
                cur.append((field, value.strip()))
    if cur:
        paras.append(cur)
    return [dict(p) for p in paras]


def licence_of(copyright_path, relpath):
    """(short name, text) of the last Files paragraph matching relpath (DEP-5)."""
    paras = deb822(copyright_path)
    texts = {p["License"].split("\n", 1)[0]: p["License"].partition("\n")[2]
             for p in paras if "License" in p and "Files" not in p}
    found = None
    for p in paras:
        if "Files" in p and any(fnmatch.fnmatchcase(relpath, g) for g in p["Files"].split()):
            found = p["License"]
    if found is None:
        sys.exit(f"sbom: no licence for {relpath} in {copyright_path}")
    name, _, text = found.partition("\n")
    return name.strip(), (text or texts.get(name.strip(), "")).replace("\n.\n", "\n\n")


def licence_entry(name, text):
    if name in SPDX_OF_DEBIAN:
        return {"license": {"id": SPDX_OF_DEBIAN[name]}}
    return {"license": {"name": name, "text": {"content": text.strip() + "\n", "contentType": "text/plain"}}}


def changelog_field(srcdir, field):
    return subprocess.check_output(["dpkg-parsechangelog", "-l", os.path.join(srcdir, "debian/changelog"),
                                    "-S", field], text=True).strip()


def purl_version(v):
    return v.replace("+", "%2B").replace(":", "%3A")


def source_component(deps_dir, files):
    """The Debian source package the compiled files came from."""
    srcdir = os.path.commonpath([os.path.realpath(f) for f in files])
    while not os.path.exists(os.path.join(srcdir, "debian/changelog")):
        srcdir = os.path.dirname(srcdir)
    name, version = changelog_field(srcdir, "Source"), changelog_field(srcdir, "Version")
    upstream = version.split(":")[-1].rsplit("-", 1)[0]
    dsc = os.path.join(deps_dir, f"{name}_{version.split(':')[-1]}.dsc")
    props = [{"name": "debian:dsc", "value": os.path.basename(dsc)}]
    # A signed .dsc: the control paragraph is the one naming the source.
    control = next(p for p in deb822(dsc) if p.get("Source") == name)
    pinned = control.get("Checksums-Sha256", "")
    for line in sorted(pinned.split("\n")):
        parts = line.split()
        if len(parts) == 3:
            props.append({"name": f"debian:source-sha256:{parts[2]}", "value": parts[0]})
    nested, licences = [], {}
    for f in sorted(files):
        rel = os.path.relpath(os.path.realpath(f), srcdir)
        lname, ltext = licence_of(os.path.join(srcdir, "debian/copyright"), rel)
        licences[lname] = ltext
        nested.append({"type": "file", "bom-ref": f"{name}:{rel}", "name": rel,
                       "hashes": [{"alg": "SHA-256", "content": sha256(f)}],
                       "licenses": [licence_entry(lname, ltext)]})
    return {
        "type": "library", "bom-ref": f"debian-source:{name}", "name": name, "version": version,
        "description": f"{name} {upstream}, Debian source package {name} {version}: the files listed are compiled "
                       "into libqvs_utils.so",
        "purl": f"pkg:deb/debian/{name}@{purl_version(version)}?arch=source",
        "hashes": [{"alg": "SHA-256", "content": sha256(dsc)}],
        "licenses": [licence_entry(n, t) for n, t in sorted(licences.items())],
        "properties": props,
        "components": nested,
    }


def libc_component(arch, depends):
    """The C library: what the runtime package depends on, and what was linked."""
    m = re.search(r"\blibc6 \(([^)]*)\)", depends)
    if not m:
        sys.exit(f"sbom: no libc6 in the runtime package's Depends: {depends!r}")
    linked_pkg = "libc6:amd64" if arch == "amd64" else f"libc6-{arch}-cross"
    linked = subprocess.check_output(["dpkg-query", "-W", "-f=${Version}", linked_pkg], text=True).strip()
    return {
        "type": "library", "bom-ref": "debian:libc6", "name": "libc6", "version": linked,
        "description": "GNU C Library (runtime dependency)",
        "scope": "required",
        "purl": f"pkg:deb/debian/libc6@{purl_version(linked)}?arch={arch}",
        "licenses": [{"expression": "LGPL-2.1-or-later"}],
        "properties": [{"name": "debian:depends", "value": f"libc6 ({m.group(1)})"},
                       {"name": "debian:linked-against", "value": f"{linked_pkg} {linked}"}],
    }


def file_components(root, pkg):
    out = []
    for d, _, names in os.walk(root):
        for n in names:
            p = os.path.join(d, n)
            if os.path.islink(p) or not os.path.isfile(p):
                continue
            rel = "/" + os.path.relpath(p, root)
            out.append({"type": "file", "bom-ref": f"{pkg}:{rel}", "name": rel,
                        "hashes": [{"alg": "SHA-256", "content": sha256(p)}]})
    return sorted(out, key=lambda c: c["name"])


def bom(pkg, version, arch, stamp, root, extra, depends_on, description):
    ref = f"pkg:deb/qvs/{pkg}@{purl_version(version)}?arch={arch}"
    doc = {
        "bomFormat": "CycloneDX", "specVersion": "1.5", "version": 1,
        "metadata": {
            "timestamp": stamp,
            "tools": {"components": [{"type": "application", "name": "scripts/sbom.py", "supplier": SUPPLIER}]},
            "supplier": SUPPLIER,
            "component": {"type": "library", "bom-ref": ref, "name": pkg, "version": version,
                          "description": description, "supplier": SUPPLIER, "purl": ref,
                          "licenses": [{"license": {"id": "MIT"}}]},
        },
        "components": file_components(root, pkg) + extra,
        "dependencies": [{"ref": ref, "dependsOn": sorted(depends_on)}]
                        + [{"ref": r, "dependsOn": []} for r in sorted(depends_on)],
    }
    # Serial number from the content, so the same build gives the same file.
    body = json.dumps(doc, sort_keys=True).encode()
    doc["serialNumber"] = f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_URL, hashlib.sha256(body).hexdigest())}"
    return doc


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--stage", required=True, help="CPack's staging folder (runtime/ and development/ in it)")
    ap.add_argument("--arch", required=True)
    ap.add_argument("--version", required=True, help="Debian version of both packages")
    ap.add_argument("--libc-depends", required=True, help="the runtime package's Depends field")
    ap.add_argument("--deps-dir", required=True, help="where the Debian source packages were unpacked")
    ap.add_argument("--compiled", action="append", default=[], metavar="FILE;FILE...",
                    help="files of one source package compiled in (repeat per package)")
    ap.add_argument("--out", required=True, help="folder inside the development staging tree")
    a = ap.parse_args()

    epoch = int(os.environ.get("SOURCE_DATE_EPOCH") or subprocess.check_output(
        ["git", "log", "-1", "--format=%ct"], text=True).strip())
    stamp = datetime.fromtimestamp(epoch, timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
    sources = [source_component(a.deps_dir, [f for f in group.split(";") if f]) for group in a.compiled]
    libc = libc_component(a.arch, a.libc_depends)
    runtime_ref = f"pkg:deb/qvs/libqvs-utils1@{purl_version(a.version)}?arch={a.arch}"
    docs = {
        "libqvs-utils1": bom("libqvs-utils1", a.version, a.arch, stamp, os.path.join(a.stage, "runtime"),
                             sources + [libc], [c["bom-ref"] for c in sources] + [libc["bom-ref"]],
                             "home gateway shared utility library"),
        "libqvs-utils-dev": bom("libqvs-utils-dev", a.version, a.arch, stamp, os.path.join(a.stage, "development"),
                                [{"type": "library", "bom-ref": runtime_ref, "name": "libqvs-utils1",
                                  "version": a.version, "purl": runtime_ref,
                                  "licenses": [{"license": {"id": "MIT"}}]}],
                                [runtime_ref], "home gateway shared utility library (development files)"),
    }
    os.makedirs(a.out, exist_ok=True)
    for pkg, doc in docs.items():
        path = os.path.join(a.out, f"{pkg}.cdx.json")
        with open(path, "w", encoding="utf-8") as f:
            json.dump(doc, f, indent=2, sort_keys=True)
            f.write("\n")
        os.chmod(path, 0o644)  # whatever the builder's umask: the package's bytes stay the same


if __name__ == "__main__":
    main()
