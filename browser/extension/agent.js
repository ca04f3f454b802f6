// The way to the agent: the program that the browser starts for this extension, as long as it is needed.
export const api = globalThis.browser ?? globalThis.chrome;

const hostName = "org.quenlet.browser";

class OtherVersion extends Error {}

export class Agent {
  #port = api.runtime.connectNative(hostName);
  #waiting = new Map();
  #last = 0;
  #onChanged;
  #reasonOfEnd = null;

  // `onChanged` is called whenever the donated card has become another one, once watch() was called.
  constructor(onChanged = () => {}) {
    this.#onChanged = onChanged;
    this.#port.onMessage.addListener((message) => this.#receive(message));
    this.#port.onDisconnect.addListener((port) => this.#end(port.error?.message ?? api.runtime.lastError?.message));
  }

  // The whole card. Never fails: without the program the card is empty and says why.
  async card() {
    try {
      return await this.#ask("card");
    } catch (failure) {
      return {
        state: "noProgram",
        sentence: failure instanceof OtherVersion
          ? "The extension and quenlet's program are of different versions. Update both, and start the browser again."
          : "The browser could not start quenlet's program for it. Is the package quenlet-browser installed? " +
            "A browser in a sandbox, such as a Flatpak or a snap, cannot start it.",
        notes: [failure.message],
        name: {}, emails: [], phones: [], addresses: [], leftOut: [],
      };
    }
  }

  async watch() {
    await this.#ask("changes").catch(() => {}); // card() says what is wrong
  }

  close() {
    this.#port.disconnect();
    this.#end("closed");
  }

  #ask(word) {
    if (this.#reasonOfEnd) return Promise.reject(new Error(this.#reasonOfEnd));
    return new Promise((resolve, reject) => {
      const id = ++this.#last;
      this.#waiting.set(id, {resolve, reject});
      this.#port.postMessage({id, ask: word});
    });
  }

  #receive(message) {
    if (message.event === "changed") return this.#onChanged();
    const waiting = this.#waiting.get(message.id);
    this.#waiting.delete(message.id);
    if (message.error) waiting?.reject(new OtherVersion(`the program answers: ${message.error}`));
    else waiting?.resolve(message);
  }

  #end(reason) {
    this.#reasonOfEnd = reason ?? "quenlet's program ended";
    for (const {reject} of this.#waiting.values()) reject(new Error(this.#reasonOfEnd));
    this.#waiting.clear();
  }
}
