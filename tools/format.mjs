// Formats every C++ file in place.

import { main } from './workshop/report.mjs';
import { format } from './workshop/style.mjs';

await main(format);
