# Tests that can't run under Wine, as Suite.Case, each with its reason. They run on Windows.
set(KIV_EXCLUDED_TESTS)
