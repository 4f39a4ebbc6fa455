// What a declaration file declares and says about it, read with the TypeScript compiler.

import { readFileSync } from 'node:fs';
import ts from 'typescript';

const { SyntaxKind } = ts;

/**
 * @param {string} path of a declaration file
 * @returns {{classes: object[], records: object[], unions: object[]}} in the file's order
 * @throws {Error} for a class or a method without a comment
 */
export function readDeclarations(path) {
  const source = ts.createSourceFile(path, readFileSync(path, 'utf8'), ts.ScriptTarget.Latest, true);
  const ofKind = (kind, read) => source.statements.filter((node) => node.kind === kind).map(read);
  return {
    classes: ofKind(SyntaxKind.ClassDeclaration, readClass),
    records: ofKind(SyntaxKind.InterfaceDeclaration, readRecord),
    unions: ofKind(SyntaxKind.TypeAliasDeclaration, (node) => ({ name: node.name.text, comment: commentOf(node) })),
  };
}

const readClass = (node) => ({ name: node.name.text, comment: commentOf(node), members: node.members.map(readMember) });

const readRecord = (node) => ({
  name: node.name.text,
  comment: commentOf(node),
  members: node.members.map((member) => ({
    name: member.name.text,
    type: member.type.getText(),
    // Names such as left and top say it all.
    comment: ts.getJSDocCommentsAndTags(member).length > 0 ? commentOf(member) : '',
  })),
});

function readMember(node) {
  const tags = ts.getJSDocTags(node);
  const textOf = (tag) => ts.getTextOfJSDocComment(tag.comment) ?? '';
  return {
    name: node.name?.text ?? 'constructor',
    signature: node.getText(),
    comment: commentOf(node),
    parameters: node.parameters.map((parameter) => ({
      name: parameter.name.text,
      comment: ts.getJSDocParameterTags(parameter).map(textOf).join(' '),
    })),
    returns: tags.filter(ts.isJSDocReturnTag).map(textOf)[0],
    throws: tags.filter(ts.isJSDocThrowsTag).map((tag) => ({ type: tag.typeExpression.type.getText(), text: textOf(tag) })),
  };
}

function commentOf(node) {
  const [comment] = ts.getJSDocCommentsAndTags(node);
  if (!comment) {
    throw new Error(`${node.getSourceFile().fileName} says nothing about ${node.name?.text ?? 'the constructor'}`);
  }
  return ts.getTextOfJSDocComment(comment.comment) ?? '';
}
