import js from '@eslint/js';
import globals from 'globals';

export default [
  { ignores: ['build/', 'demo-out/', 'node_modules/', 'prebuilds/'] },
  js.configs.recommended,
  { languageOptions: { globals: globals.node }, linterOptions: { reportUnusedDisableDirectives: 'error' } },
  { files: ['**/*.js', '**/*.cjs'], languageOptions: { sourceType: 'commonjs' } },
];
