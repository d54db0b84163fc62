<p>Please choose a day.</p>
