// What is made from Node's headers: a definition of each function that they declare, under their conditions.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { areHostFunctionsCurrent, callsFor } from '../../tools/host-functions/host-functions.mjs';

const HEADER = `#ifndef SRC_NODE_API_H_
#define SRC_NODE_API_H_
#ifdef _WIN32 // NAPI_EXTERN is not a declaration here
#define SOMETHING \\
  else
#endif
NAPI_EXTERN napi_status NAPI_CDECL napi_one(napi_env env,
                                            const char** names);
#if NAPI_VERSION >= 9
NAPI_EXTERN NAPI_NO_RETURN void NAPI_CDECL
napi_two(size_t count);
#endif  // NAPI_VERSION >= 9
#endif  // SRC_NODE_API_H_
`;

test('each function becomes a call of the host’s under the conditions of its declaration', () => {
  assert.equal(
    callsFor(HEADER, 'node_api.h'),
    `static brisolte::HostFunction host_napi_one("napi_one");
extern "C" napi_status NAPI_CDECL napi_one(napi_env env, const char** names) {
  return host_napi_one.Call<decltype(&napi_one)>(env, names);
}
#if NAPI_VERSION >= 9
static brisolte::HostFunction host_napi_two("napi_two");
extern "C" void NAPI_CDECL napi_two(size_t count) {
  host_napi_two.Call<decltype(&napi_two)>(count);
  std::abort();
}
#endif
`,
  );
});

test('a declaration of another form is an error', () => {
  const header = 'NAPI_EXTERN int32_t NAPI_CDECL napi_three(napi_env env);\n';
  assert.throws(() => callsFor(header, 'node_api.h'), /node_api\.h: a declaration of an unknown form: .*napi_three/);
});

test('the file in the tree is what the headers say', () => assert.ok(areHostFunctionsCurrent()));
