// Whether a person can see a field. Pages hide fields to catch programs, or to take what nobody meant to
// give. In doubt a field is hidden. A plain script, which is injected into pages before the others.
{
  const smallest = 10; // pixels
  const faintest = 0.4;
  const axes = [
    {from: "left", to: "right", overflow: "overflowX", place: "scrollLeft", placeOfWindow: "scrollX",
      whole: "scrollWidth", part: "clientWidth", view: "innerWidth"},
    {from: "top", to: "bottom", overflow: "overflowY", place: "scrollTop", placeOfWindow: "scrollY",
      whole: "scrollHeight", part: "clientHeight", view: "innerHeight"},
  ];

  // Controls of a form hide its properties behind their own names, and images those of a document: its
  // prototype has them still.
  const get = (node, name) => Reflect.get(Object.getPrototypeOf(node), name, node);
  const call = (node, name, ...given) => get(node, name).call(node, ...given);

  const parentOf = (element) => get(element, "assignedSlot") ?? get(element, "parentElement") ??
    get(call(element, "getRootNode"), "host") ?? null;
  const cuts = (overflow) => overflow === "hidden" || overflow === "clip";
  const isOpen = (style) => style.overflowX === "visible" && style.overflowY === "visible";

  function boxOf(element) {
    const {left, right, top, bottom} = call(element, "getBoundingClientRect");
    return {left, right, top, bottom};
  }

  const isLargeEnough = ({left, right, top, bottom}) => right - left >= smallest && bottom - top >= smallest;

  function isMadeUnseen(style, element) {
    const isMasked = [style.maskImage, style.webkitMaskImage].some((image) => image && image !== "none");
    return style.clipPath !== "none" || (style.clip !== "auto" && style.position !== "static") || isMasked ||
      /opacity|url/.test(style.filter) || get(element, "inert") || call(element, "getAttribute", "aria-hidden") === "true";
  }

  // Whether what is fixed stays within such an ancestor, as it does not in others.
  const holdsFixed = (style) => style.willChange !== "auto" || ["transform", "translate", "rotate", "scale", "perspective",
    "filter", "backdropFilter", "contain", "offsetPath"].some((name) => style[name] && style[name] !== "none");

  function cutTo(box, frame, {from, to}) {
    box[from] = Math.max(box[from], frame[from]);
    box[to] = Math.min(box[to], frame[to]);
  }

  // Leaves of `reach` what can be scrolled into view in `ancestor`, and of `now` what is in view.
  function narrow({reach, now}, ancestor, style) {
    const frame = boxOf(ancestor);
    for (const axis of axes) {
      const {from, to, overflow, place, whole, part} = axis;
      if (style[overflow] === "visible") continue;
      cutTo(now, frame, axis);
      if (!cuts(style[overflow])) {
        const scrolled = get(ancestor, place);
        const isReversed = scrolled < 0 || (from === "left" && style.direction === "rtl");
        const first = frame[from] - scrolled + (isReversed ? get(ancestor, part) - get(ancestor, whole) : 0);
        cutTo(reach, {[from]: first, [to]: first + get(ancestor, whole)}, axis);
        reach[to] += frame[from] - reach[from];
        reach[from] = frame[from];
      }
      cutTo(reach, frame, axis);
    }
  }

  const viewOf = ({innerWidth, innerHeight}) => ({left: 0, top: 0, right: innerWidth, bottom: innerHeight});

  // The same for the window, which scrolls unless the page forbids it.
  function narrowToWindow({reach, now}, window, root, style) {
    const view = viewOf(window);
    for (const axis of axes) {
      cutTo(now, view, axis);
      if (cuts(style[axis.overflow])) {
        cutTo(reach, view, axis);
        continue;
      }
      const length = Math.max(get(root, axis.whole), window[axis.view]);
      // A page that is written from the right is scrolled to the left.
      const isReversed = axis.from === "left" && window.getComputedStyle(root).direction === "rtl";
      const first = (isReversed ? window.innerWidth - length : 0) - window[axis.placeOfWindow];
      cutTo(reach, {[axis.from]: first, [axis.to]: first + length}, axis);
    }
  }

  // Whether something else lies over the middle of a field, of which `now` is in view.
  function isCovered(element, now) {
    if (!isLargeEnough(now)) return false;
    const labels = [...(get(element, "labels") ?? [])];
    const root = call(element, "getRootNode");
    const free = [1, 2, 3].filter((quarter) => {
      const top = call(root, "elementFromPoint", now.left + (now.right - now.left) * quarter / 4, (now.top + now.bottom) / 2);
      return top && [element, ...labels].some((each) => call(each, "contains", top));
    });
    return free.length < 2;
  }

  function isVisible(element) {
    const canBe = {checkOpacity: true, checkVisibilityCSS: true, opacityProperty: true, visibilityProperty: true};
    if (!get(element, "isConnected") || !call(element, "checkVisibility", canBe)) return false;
    const page = get(element, "ownerDocument");
    const window = get(page, "defaultView");
    const root = get(page, "documentElement");
    const body = get(page, "body");
    const rootStyle = window.getComputedStyle(root);
    const boxes = {reach: boxOf(element), now: boxOf(element)};
    let opacity = 1, hasBack = true, isTurned = false, isFixed = false;
    for (let each = element; each; each = parentOf(each)) {
      const style = window.getComputedStyle(each);
      opacity *= Number(style.opacity);
      hasBack &&= style.backfaceVisibility !== "hidden";
      isTurned ||= style.transform.startsWith("matrix3d") || /[xyz]|\d .*\d/.test(style.rotate);
      if (isMadeUnseen(style, each)) return false;
      const isOfWindow = each === root || (each === body && isOpen(rootStyle));
      isFixed &&= !holdsFixed(style);
      if (each !== element && !isOfWindow && !isFixed) narrow(boxes, each, style);
      if (style.position !== "fixed") continue;
      isFixed = true;
      // It does not move when the page is scrolled, nor does what is in it.
      for (const axis of axes) cutTo(boxes.reach, viewOf(window), axis);
    }
    narrowToWindow(boxes, window, root, body && isOpen(rootStyle) ? window.getComputedStyle(body) : rootStyle);
    return opacity >= faintest && (hasBack || !isTurned) && isLargeEnough(boxes.reach) && !isCovered(element, boxes.now);
  }

  // Whether all frames around this document are of the page's own origin, and in sight.
  function isFrameOfPage() {
    try {
      if (window === top) return true;
      if (top.origin !== self.origin || self.origin === "null") return false;
      for (let frame = window; frame !== top; frame = frame.parent) {
        if (!isVisible(frame.frameElement)) return false;
      }
      return true;
    } catch {
      return false; // of another origin: it says no more
    }
  }

  globalThis.quenletSight = {isVisible, isFrameOfPage, get, call};
}
