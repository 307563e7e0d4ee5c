package com.tarq.shell;

/** One command line at a time for callers with uid 0 (root) or 1000 (system). */
interface IShellService {
    /**
     * Runs the command line with the system shell and appends its standard output to output as one
     * text of at most 1023 bytes of UTF-8. Waits for every earlier command to end.
     *
     * Any other uid gets the transaction status -1. The returned int carries no meaning.
     */
    int executeCommand(String command, out List<String> output);
}
