#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The SBOMs the -dev packages carry (needs make package):
#  1. every one is valid CycloneDX, by the CycloneDX project's own
#     validator (scripts/sbom-validate.sh);
#  2. each describes the package it is named after: every file it lists is
#     in that package with that SHA-256, and every file of the package
#     (the SBOMs themselves aside) is listed;
#  3. an SBOM with one field made invalid (a hash algorithm the format does
#     not know) is rejected by the same validator.
set -euo pipefail
cd "$(dirname "$0")/.."
work=build/sbom-check
rm -rf "$work"
mkdir -p "$work"
fail=0
say() { echo "sbom-check: $*"; }

sboms=()
for arch in amd64 armhf; do
  for pkg in libqvs-utils1 libqvs-utils-dev; do
    deb=$(ls build/packages/${pkg}_*_"$arch".deb 2>/dev/null || true)
    [ -n "$deb" ] || { say "no $pkg $arch package (make package)"; exit 1; }
    mkdir -p "$work/$arch/$pkg"
    dpkg-deb -x "$deb" "$work/$arch/$pkg"
  done
  for pkg in libqvs-utils1 libqvs-utils-dev; do
    sbom=$work/$arch/libqvs-utils-dev/usr/share/doc/libqvs-utils-dev/$pkg.cdx.json
    [ -f "$sbom" ] || { say "$arch: no $pkg SBOM in libqvs-utils-dev"; fail=1; continue; }
    sboms+=("$sbom")
    python3 - "$sbom" "$work/$arch/$pkg" <<'PY' || fail=1
import hashlib, json, os, sys
sbom, root = sys.argv[1], sys.argv[2]
doc = json.load(open(sbom))
listed = {c["name"]: c["hashes"][0]["content"] for c in doc["components"] if c["type"] == "file"}
shipped = {}
for d, _, names in os.walk(root):
    for n in names:
        p = os.path.join(d, n)
        if not os.path.islink(p) and not n.endswith(".cdx.json"):
            shipped["/" + os.path.relpath(p, root)] = hashlib.sha256(open(p, "rb").read()).hexdigest()
bad = [f"{n}: listed {listed.get(n)}, shipped {shipped.get(n)}" for n in sorted(set(listed) | set(shipped))
       if listed.get(n) != shipped.get(n)]
for b in bad:
    print(f"sbom-check: {os.path.basename(sbom)} ({root}): {b}")
sys.exit(1 if bad else 0)
PY
  done
done

bash scripts/sbom-validate.sh "${sboms[@]}" || fail=1

# One field made invalid: the validator must say so.
broken=$work/broken.cdx.json
python3 -c 'import json, sys
doc = json.load(open(sys.argv[1]))
doc["components"][0]["hashes"][0]["alg"] = "SHA-257"
json.dump(doc, open(sys.argv[2], "w"), indent=2)' "${sboms[0]}" "$broken"
if bash scripts/sbom-validate.sh "$broken" > "$work/broken.log" 2>&1; then
  say "an SBOM with hash algorithm SHA-257 passed the validator: FAILED"; cat "$work/broken.log"; fail=1
elif grep -q '"instancePath": "/components/0/hashes/0/alg"' "$work/broken.log"; then
  say "an SBOM with hash algorithm SHA-257 is rejected at /components/0/hashes/0/alg: ok"
else
  say "the validator failed on the changed SBOM for another reason: FAILED"; cat "$work/broken.log"; fail=1
fi
say "$([ $fail = 0 ] && echo "${#sboms[@]} SBOMs ok" || echo FAILED)"
exit $fail
