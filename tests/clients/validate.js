// node validate.js FILE...: checks glTF files with the Khronos validator. Prints every error and warning; exit status 1 when
// there is any. NODE_PATH names the folder with the module.

const fs = require('fs');
const path = require('path');
const validator = require('gltf-validator');

async function validate(file) {
  const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
    uri: path.basename(file),
    externalResourceFunction: (uri) =>
      fs.promises.readFile(path.join(path.dirname(file), decodeURIComponent(uri))).then((data) => new Uint8Array(data)),
  });
  for (const issue of report.issues.messages.filter((each) => each.severity <= 1)) {
    console.log(`${path.basename(file)}: ${issue.code} ${issue.pointer || issue.offset}: ${issue.message}`);
  }
  return report.issues.numErrors + report.issues.numWarnings;
}

async function main(files) {
  let bad = 0;
  for (const file of files) {
    bad += await validate(file);
  }
  console.log(`${files.length} files, ${bad} errors and warnings`);
  process.exitCode = files.length > 0 && bad === 0 ? 0 : 1;
}

main(process.argv.slice(2));
