// SPDX-License-Identifier: MIT
// Validates CycloneDX JSON SBOMs against the official schema of the version
// each one declares, with the CycloneDX project's own library (strict
// schema: no unknown fields). Prints every error; exit 1 if any file fails.
import { readFileSync } from 'node:fs'
import { Validation } from '@cyclonedx/cyclonedx-library'

const validators = new Map()  // one compiled schema per version
let failed = false
for (const file of process.argv.slice(2)) {
  const text = readFileSync(file, 'utf8')
  const declared = JSON.parse(text).specVersion
  if (!validators.has(declared)) validators.set(declared, new Validation.JsonStrictValidator(declared))
  let errors
  try {
    errors = await validators.get(declared).validate(text)
  } catch (err) {
    // The library knows which versions it has a schema for.
    if (!(err instanceof Validation.NotImplementedError)) throw err
    console.log(`${file}: unknown CycloneDX version ${JSON.stringify(declared)}`)
    failed = true
    continue
  }
  if (errors === null) {
    console.log(`${file}: valid CycloneDX ${declared}`)
  } else {
    console.log(`${file}: INVALID CycloneDX ${declared}:\n${JSON.stringify(errors, null, 2)}`)
    failed = true
  }
}
process.exit(failed ? 1 : 0)
