// Validates glTF files with the Khronos validator and prints one JSON line a file:
// {"file", "errors", "warnings", "infos", "messages"}. The validator's promise resolves for
// invalid files too; the caller gates on the counts.
import { validateBytes } from 'gltf-validator';
import { readFileSync } from 'node:fs';
import { dirname, join } from 'node:path';

for (const file of process.argv.slice(2)) {
  const bytes = new Uint8Array(readFileSync(file));
  const external = (uri) =>
    Promise.resolve(new Uint8Array(readFileSync(join(dirname(file), decodeURIComponent(uri)))));
  const report = await validateBytes(bytes, { externalResourceFunction: external, maxIssues: 50 });
  const { numErrors, numWarnings, numInfos, messages } = report.issues;
  console.log(JSON.stringify({
    file, errors: numErrors, warnings: numWarnings, infos: numInfos,
    messages: messages.map((m) => `${m.code} ${m.pointer ?? ''}: ${m.message}`),
  }));
}
