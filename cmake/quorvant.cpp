// Licence: MIT, see LICENSE.
// The shared library is the sum of its folders; a shared object needs one source of its own.
