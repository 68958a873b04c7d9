// The exports of the module.
