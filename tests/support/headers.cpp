// SPDX-License-Identifier: Apache-2.0
// Holds the headers that test programs share; see nuxo_test_headers.
