// SPDX-License-Identifier: MIT
// Validates CycloneDX JSON SBOMs against the official schema of the version
// each one declares, with the CycloneDX project's own library (strict
// schema: no unknown fields). Prints every error; exit 1 if any file fails.
import { readFileSync } from 'node:fs'
import { Spec, Validation } from '@cyclonedx/cyclonedx-library'

const versions = new Map(Object.values(Spec.Version).map(v => [v, v]))
const validators = new Map()  // one compiled schema per version
let failed = false
for (const file of process.argv.slice(2)) {
  const text = readFileSync(file, 'utf8')
  const declared = JSON.parse(text).specVersion
  if (!versions.has(declared)) {
    console.log(`${file}: unknown CycloneDX version ${JSON.stringify(declared)}`)
    failed = true
    continue
  }
  if (!validators.has(declared)) validators.set(declared, new Validation.JsonStrictValidator(declared))
  const errors = await validators.get(declared).validate(text)
  if (errors === null) {
    console.log(`${file}: valid CycloneDX ${declared}`)
  } else {
    console.log(`${file}: INVALID CycloneDX ${declared}:\n${JSON.stringify(errors, null, 2)}`)
    failed = true
  }
}
process.exit(failed ? 1 : 0)
