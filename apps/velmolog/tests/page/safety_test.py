"""Hostile texts, requests, and the policy of the page."""
from page_case import PageTest


class Safety(PageTest):
    def test_hostile_texts_are_only_texts(self):
        self.open("hostile")
        self.assertTrue(self.browser.driver.title.startswith("</title><script>document.title="))
        rows = "\n".join(self.cells("type"))
        for text in ["</script><script>document.title='run'</script>",
                     "<img src=x onerror=\"document.title='run'\">",
                     "<!-- <script> ]]> --!> </style></bdi></template>",
                     "&lt;b&gt; &amp; \\u003c \\\" \\", "abcU+202Etxt.exeU+202C U+2066U+2069U+200BU+FEFF",
                     "zeroU+0000end", "high \uFFFD low \uFFFD pair \U0001F600",
                     "line oneU+000Aline twoU+000DU+000AU+2028threeU+001B[31mU+007FU+0085",
                     "U+007FaU+007F U+007F~U+007F U+007FU+0001", "__proto__", "{{constructor}} ${alert(1)} %s @DATA@ @SCRIPT@"]:
            self.assertIn(text, rows)
        self.assertIn("U+007FaU+007F U+007F~U+007F U+007FU+0001",
                      "\n".join(self.cells("text")))
        for message in range(1, 15):
            self.browser.run("location.hash = `#message=${arguments[0]}`", message)
            self.browser.wait_for(lambda number=message: f"Message {number}" in
                                  self.browser.find("#details").text)
            self.assert_isolated()
        self.assertEqual(self.browser.run(
            "return document.querySelectorAll('img, iframe, object, embed, link, a').length"), 0)
        self.assertEqual(self.browser.run("return document.scripts.length"), 1)

    def assert_isolated(self):
        """Each character that is not ASCII, and no control, is in an element that isolates it."""
        self.assertEqual(self.browser.run(r"""
            const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
            const found = [];
            while (texts.nextNode()) {
              const { data, parentElement } = texts.currentNode;
              if (parentElement.closest('script, option, header, .details-head button')) continue;
              if (/[\p{Cc}\p{Cf}\p{Cs}]/u.test(data.replace(/[\n\t]/g, ''))) found.push(data);
              if (/[^\x00-\x7F]/.test(data) && !parentElement.closest('bdi')) found.push(data);
            }
            return found;"""), [])

    def test_details_keep_line_breaks(self):
        self.open("hostile", "#message=8")
        text = self.browser.run("return document.querySelector('#details .whole-text').innerText")
        self.assertIn("line one\nline twoU+000D\nU+2028three", text)

    def test_details_of_a_huge_text_state_how_much_is_left_out(self):
        self.open("hostile", "#message=13")
        text = self.browser.run("return document.querySelector('#details .whole-text').textContent")
        self.assertRegex(text, "^Übersetzt: x{99989}… and 300,0[0-9]{2} characters$")

    def test_nothing_is_requested(self):
        for kind in ["sample", "hostile"]:
            self.browser.open("about:blank")
            self.browser.requests()
            self.browser.driver.get(self.page(kind))
            self.browser.find("#row-1").click()
            self.assertEqual(self.browser.requests(), [self.page(kind)])

    def test_the_policy_allows_one_script_and_one_style(self):
        self.open("sample")
        digest = "'sha256-[A-Za-z0-9+/]{43}='"
        self.assertRegex(
            self.browser.find("meta[http-equiv]").get_attribute("content"),
            f"^default-src 'none'; script-src {digest}; style-src {digest}; base-uri 'none'; "
            "form-action 'none'$")

    def test_the_policy_refuses_requests_scripts_and_styles(self):
        self.open("sample")
        refused = self.browser.driver.execute_async_script("""
            const [done] = arguments;
            const refused = [];
            addEventListener('securitypolicyviolation', ({ effectiveDirective }) => {
              refused.push(effectiveDirective);
              if (refused.length === 5) done(refused.sort());
            });
            const add = (name, fields) => document.body.append(
              Object.assign(document.createElement(name), fields));
            add('img', { src: 'data:image/png;base64,AAAA' });
            add('script', { textContent: "document.title = 'run'" });
            add('style', { textContent: 'body { color: red }' });
            add('iframe', { src: 'https://localhost:1/' });
            fetch('https://localhost:1/').catch(() => {});""")
        self.assertEqual(refused, ["connect-src", "frame-src", "img-src", "script-src-elem",
                                   "style-src-elem"])
        self.assertNotEqual(self.browser.driver.title, "run")
        self.browser.complaints()
