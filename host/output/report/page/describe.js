// The variables of a table, one by one.

function descriptionSection(findings) {
  return null;
}
