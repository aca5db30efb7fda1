// node validate.js FILE...: looks at glTF files with the Khronos validator. Exit status 1, and what is wrong on standard
// output, when any has an error or a warning. NODE_PATH names the folder with the module.

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
