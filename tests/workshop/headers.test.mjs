// The module's sources with an FFmpeg older than its own.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { checkAgainst } from '../../tools/workshop/headers.mjs';

test('the sources compile without a warning against the headers of FFmpeg 5.1', async () => {
  const { version, sources, failures } = await checkAgainst('bookworm');
  assert.match(version, /^5\.1\./);
  assert.ok(sources.includes('encoder/ffmpeg/ffmpeg_encoder.cpp') && sources.includes('capture/codec_probe.cpp'));
  assert.deepEqual(failures, []);
});
